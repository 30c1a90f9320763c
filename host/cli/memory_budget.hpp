#pragma once
// How many array elements one flowsheet (or one described type) may hold, unless the user
// says (--max-unknowns): what the memory this process can still use would hold, so that a
// size far beyond it is refused up front with a message instead of ending in an allocation
// failure part way through.
#include <cstddef>

namespace zorexp_cli {

// Bytes of memory the process can still use: the least of the memory the system reports
// available, the room left under the process's address-space and data limits (ulimit -v,
// ulimit -d) and under its cgroup's memory limit.
std::size_t AvailableMemory();

// The element limit that memory allows (never below a floor that any machine can hold).
std::size_t ElementLimitFromMemory(std::size_t availableBytes);

}  // namespace zorexp_cli
