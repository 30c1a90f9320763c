#include "host_command.hpp"

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <unistd.h>

CommandResult RunHost(const std::string& arguments, const std::string& shellBefore) {
    char errPath[] = "/tmp/zorexp_test_stderrXXXXXX";
    const int fd = mkstemp(errPath);
    if (fd >= 0) close(fd);
    const std::string command = shellBefore + "'" + ZOREXP_COMMAND + "' " + arguments + " 2>" + errPath;
    CommandResult r;
    if (FILE* p = popen(command.c_str(), "r")) {
        char buf[4096];
        std::size_t n;
        while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
        const int raw = pclose(p);
        r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    }
    std::ifstream err(errPath);
    std::stringstream ss;
    ss << err.rdbuf();
    r.err = ss.str();
    std::remove(errPath);
    return r;
}
