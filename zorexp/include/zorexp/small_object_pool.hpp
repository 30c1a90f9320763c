#pragma once
// Size-class pool for the millions of small objects (variables and parameters) a large model
// makes. Blocks carry no per-object header, which keeps a scalar variable at 64 bytes.
// Objects larger than the largest class, and all objects in sanitizer builds, use the heap.
// Not thread-safe: the runtime drives one flowsheet from one thread.
#include <cstddef>

void* VX_PoolAllocate(std::size_t size);
void VX_PoolFree(void* p, std::size_t size) noexcept;
// Bytes held by the pool (in chunks), for memory reports.
std::size_t VX_PoolBytesReserved();
