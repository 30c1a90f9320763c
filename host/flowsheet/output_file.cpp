#include "flowsheet/output_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

namespace zx::flowsheet {
namespace {

std::string Reason() { return std::strerror(errno); }

// The mode a new file gets (0666 less the umask), or the target's own when it exists.
mode_t ModeFor(const std::string& target) {
    struct stat info {};
    if (::stat(target.c_str(), &info) == 0) return info.st_mode & 07777;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(std::string target, std::string temporary)
    : m_target(std::move(target)), m_temporary(std::move(temporary)) {}

std::unique_ptr<OutputFile> OutputFile::Create(const std::string& target, std::string& why) {
    struct stat info {};
    const bool exists = ::stat(target.c_str(), &info) == 0;
    if (exists && S_ISDIR(info.st_mode)) {
        why = "is a directory";
        return nullptr;
    }
    if (exists && !S_ISREG(info.st_mode)) {
        std::unique_ptr<OutputFile> direct(new OutputFile(target, ""));
        direct->m_stream.open(target, std::ios::binary);
        if (!direct->m_stream) {
            why = Reason();
            return nullptr;
        }
        return direct;
    }
    const auto slash = target.rfind('/');
    const std::string dir = slash == std::string::npos ? "" : target.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? target : target.substr(slash + 1);
    std::string pattern = dir + "." + name + ".XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    const int fd = ::mkstemp(buffer.data());
    if (fd < 0) {
        why = "cannot create a file in " + (dir.empty() ? std::string("the current directory") : dir) + ": " + Reason();
        return nullptr;
    }
    ::fchmod(fd, ModeFor(target));
    ::close(fd);
    std::unique_ptr<OutputFile> file(new OutputFile(target, buffer.data()));
    file->m_stream.open(file->m_temporary, std::ios::binary | std::ios::trunc);
    if (!file->m_stream) {
        why = Reason();
        return nullptr;   // the destructor removes the temporary file
    }
    return file;
}

OutputFile::~OutputFile() {
    if (m_committed || m_temporary.empty()) return;
    m_stream.close();
    ::unlink(m_temporary.c_str());
}

bool OutputFile::Commit(std::string& why) {
    m_stream.flush();
    m_stream.close();
    if (!m_stream) {
        why = "writing failed: " + Reason();
        return false;
    }
    if (m_temporary.empty()) return m_committed = true;
    // On disk before it replaces the target, so that a crash cannot leave an empty file.
    const int fd = ::open(m_temporary.c_str(), O_RDONLY);
    const bool synced = fd >= 0 && ::fsync(fd) == 0;
    if (fd >= 0) ::close(fd);
    if (!synced) {
        why = "writing failed: " + Reason();
        return false;
    }
    if (std::rename(m_temporary.c_str(), m_target.c_str()) != 0) {
        why = "cannot put the file in place: " + Reason();
        return false;
    }
    return m_committed = true;
}

bool SameFile(const std::string& a, const std::string& b) {
    if (a == b) return true;
    struct stat x {}, y {};
    return ::stat(a.c_str(), &x) == 0 && ::stat(b.c_str(), &y) == 0 && x.st_dev == y.st_dev && x.st_ino == y.st_ino;
}

}  // namespace zx::flowsheet
