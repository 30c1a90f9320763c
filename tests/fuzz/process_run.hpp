#pragma once
// Runs a program with arguments, standard input from /dev/null, standard output to a file or
// a given path and standard error to a file, and waits at most a time limit, after which the
// process (the one started here, by its id) is killed.
#include <string>
#include <vector>

namespace zx::fuzz {

struct ProcessResult {
    bool timedOut = false;
    int exitStatus = -1;   // when it exited
    int signal = 0;        // when a signal ended it
    std::string out, err;
};

ProcessResult RunProcess(const std::string& program, const std::vector<std::string>& args, const std::string& stdoutPath,
                         const std::string& workDir, double timeoutSeconds);

}  // namespace zx::fuzz
