#include "process_run.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

namespace zx::fuzz {
namespace {

std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

}  // namespace

ProcessResult RunProcess(const std::string& program, const std::vector<std::string>& args, const std::string& stdoutPath,
                         const std::string& workDir, double timeoutSeconds) {
    const std::string outPath = workDir + "/.stdout", errPath = workDir + "/.stderr";
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);

    const pid_t pid = ::fork();
    if (pid == 0) {
        const int in = ::open("/dev/null", O_RDONLY);
        const int out = ::open((stdoutPath.empty() ? outPath : stdoutPath).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int err = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (in < 0 || out < 0 || err < 0 || ::chdir(workDir.c_str()) != 0) ::_exit(126);
        ::dup2(in, 0);
        ::dup2(out, 1);
        ::dup2(err, 2);
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }
    ProcessResult r;
    if (pid < 0) return r;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
    int raw = 0;
    for (auto pause = std::chrono::microseconds(200);; pause = std::min(pause * 2, std::chrono::microseconds(20000))) {
        const pid_t done = ::waitpid(pid, &raw, WNOHANG);
        if (done == pid) break;
        if (std::chrono::steady_clock::now() > deadline) {
            r.timedOut = true;
            ::kill(pid, SIGKILL);
            ::waitpid(pid, &raw, 0);
            break;
        }
        std::this_thread::sleep_for(pause);
    }
    if (!r.timedOut) {
        if (WIFEXITED(raw)) r.exitStatus = WEXITSTATUS(raw);
        if (WIFSIGNALED(raw)) r.signal = WTERMSIG(raw);
    }
    if (stdoutPath.empty()) r.out = ReadAll(outPath);
    r.err = ReadAll(errPath);
    return r;
}

}  // namespace zx::fuzz
