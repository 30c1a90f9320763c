#include "result_plot.hpp"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "errors.hpp"

extern char** environ;

namespace zorexp_cli {
namespace {

// Debian's interpreter has matplotlib; ZOREXP_PYTHON names another.
std::string Interpreter() {
    const char* named = std::getenv("ZOREXP_PYTHON");
    return named && *named ? named : "/usr/bin/python3";
}

// The package lives in <build>/python beside <build>/bin; a PYTHONPATH already set comes after it.
std::string PythonPath() {
    std::error_code ec;
    const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    std::string path = ec ? std::string() : (exe.parent_path() / ".." / "python").lexically_normal().string();
    if (const char* old = std::getenv("PYTHONPATH"); old && *old) path += (path.empty() ? "" : ":") + std::string(old);
    return path;
}

}  // namespace

void PlotResults(const std::string& csvFile, const std::string& pngFile, const std::vector<std::string>& vars) {
    const std::string python = Interpreter();
    std::vector<std::string> args{python, "-m", "zorexp.result_plot", csvFile, pngFile};
    args.insert(args.end(), vars.begin(), vars.end());
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);

    std::string pythonPath = "PYTHONPATH=" + PythonPath();
    std::vector<char*> env;
    for (char** e = environ; *e; ++e)
        if (std::strncmp(*e, "PYTHONPATH=", 11) != 0) env.push_back(*e);
    env.push_back(pythonPath.data());
    env.push_back(nullptr);

    pid_t pid = 0;
    if (const int err = posix_spawn(&pid, python.c_str(), nullptr, nullptr, argv.data(), env.data()); err != 0)
        throw HostFailure("--plot: cannot run " + python + ": " + std::strerror(err));
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR) throw HostFailure("--plot: lost the plotting process: " + std::string(std::strerror(errno)));
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw HostFailure("--plot: the plots could not be drawn (" + python + " -m zorexp.result_plot failed)");
}

}  // namespace zorexp_cli
