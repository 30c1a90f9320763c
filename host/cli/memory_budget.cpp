#include "memory_budget.hpp"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>

namespace zorexp_cli {
namespace {

// A solved flowsheet holds about 250 to 300 bytes per array element at its peak (the element, its
// equations' share of the Jacobian, the factorisation, the solver's vectors); 400 leaves room
// for what else the process holds.
constexpr std::size_t kBytesPerElement = 400;
// Small flowsheets always run, however little memory is reported.
constexpr std::size_t kFloorElements = 100000;
constexpr std::size_t kUnknown = std::numeric_limits<std::size_t>::max();

// "MemAvailable:  123456 kB" from /proc/meminfo, in bytes.
std::size_t SystemAvailable() {
    std::ifstream in("/proc/meminfo");
    std::string key;
    std::size_t kb = 0;
    std::string unit;
    while (in >> key >> kb >> unit)
        if (key == "MemAvailable:") return kb * 1024;
    const long pages = ::sysconf(_SC_AVPHYS_PAGES), size = ::sysconf(_SC_PAGESIZE);
    return pages > 0 && size > 0 ? static_cast<std::size_t>(pages) * static_cast<std::size_t>(size) : kUnknown;
}

// Room under a resource limit, given what the process uses already.
std::size_t UnderLimit(int resource, std::size_t used) {
    struct rlimit r {};
    if (::getrlimit(resource, &r) != 0 || r.rlim_cur == RLIM_INFINITY) return kUnknown;
    const auto limit = static_cast<std::size_t>(r.rlim_cur);
    return limit > used ? limit - used : 0;
}

// Virtual size of the process so far (/proc/self/statm, in pages).
std::size_t VirtualSize() {
    std::ifstream in("/proc/self/statm");
    std::size_t pages = 0;
    in >> pages;
    const long size = ::sysconf(_SC_PAGESIZE);
    return pages * static_cast<std::size_t>(size > 0 ? size : 4096);
}

// Room under the cgroup (v2) memory limit, when there is one.
std::size_t UnderCgroup() {
    std::ifstream maxFile("/sys/fs/cgroup/memory.max"), currentFile("/sys/fs/cgroup/memory.current");
    std::string max;
    std::size_t current = 0;
    if (!(maxFile >> max) || max == "max" || !(currentFile >> current)) return kUnknown;
    std::size_t limit = 0;
    std::istringstream(max) >> limit;
    return limit > current ? limit - current : 0;
}

}  // namespace

std::size_t AvailableMemory() {
    const std::size_t used = VirtualSize();
    return std::min({SystemAvailable(), UnderLimit(RLIMIT_AS, used), UnderLimit(RLIMIT_DATA, used), UnderCgroup()});
}

std::size_t ElementLimitFromMemory(std::size_t availableBytes) {
    if (availableBytes == kUnknown) return kUnknown;
    return std::max(kFloorElements, availableBytes / kBytesPerElement);
}

}  // namespace zorexp_cli
