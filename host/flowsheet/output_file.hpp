#pragma once
// A results file written in full or not at all. The text goes to a temporary file beside the
// target (".NAME.XXXXXX" in the same directory), which replaces the target by a rename only
// once everything is written and on disk: a failed or interrupted run never leaves a target
// emptied or half written. Targets that are not regular files (/dev/stdout, a pipe) are
// written directly.
#include <fstream>
#include <memory>
#include <string>

namespace zx::flowsheet {

class OutputFile {
public:
    // Prepares to write target; null with why set when that is not possible (no such
    // directory, no permission).
    static std::unique_ptr<OutputFile> Create(const std::string& target, std::string& why);
    ~OutputFile();   // removes the temporary file unless committed
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::ostream& Stream() { return m_stream; }
    // Completes the file and puts it in place; false with why set when writing failed (the
    // target is then left as it was).
    bool Commit(std::string& why);

private:
    OutputFile(std::string target, std::string temporary);

    std::string m_target;
    std::string m_temporary;   // empty when writing the target directly
    std::ofstream m_stream;
    bool m_committed = false;
};

// True when both paths name the same file (following links), or the same path text.
bool SameFile(const std::string& a, const std::string& b);

}  // namespace zx::flowsheet
