#include "zorexp/small_object_pool.hpp"

#include <array>
#include <cstdlib>
#include <new>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define VX_POOL_DISABLED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VX_POOL_DISABLED 1
#endif
#endif

#ifndef VX_POOL_DISABLED
namespace {
constexpr std::size_t kGranule = 16;
constexpr std::size_t kClasses = 8;            // 16, 32, ... 128 bytes
constexpr std::size_t kChunkBytes = 1u << 20;  // carve 1 MiB at a time

struct FreeNode { FreeNode* next; };

struct Pool {
    std::array<FreeNode*, kClasses> free{};
    std::array<char*, kClasses> cursor{};
    std::array<char*, kClasses> end{};
    std::vector<void*> chunks;
    std::size_t reserved = 0;
    ~Pool() { for (void* c : chunks) std::free(c); }
};

Pool& ThePool() {
    static Pool* pool = new Pool;   // lives until exit: objects may be freed during static teardown
    return *pool;
}
}  // namespace
#endif

void* VX_PoolAllocate(std::size_t size) {
#ifndef VX_POOL_DISABLED
    const std::size_t cls = (size + kGranule - 1) / kGranule;
    if (cls >= 1 && cls <= kClasses) {
        Pool& p = ThePool();
        const std::size_t k = cls - 1;
        if (FreeNode* n = p.free[k]) {
            p.free[k] = n->next;
            return n;
        }
        const std::size_t bytes = cls * kGranule;
        if (p.cursor[k] == nullptr || p.cursor[k] + bytes > p.end[k]) {
            void* chunk = std::malloc(kChunkBytes);
            if (!chunk) throw std::bad_alloc();
            p.chunks.push_back(chunk);
            p.reserved += kChunkBytes;
            p.cursor[k] = static_cast<char*>(chunk);
            p.end[k] = p.cursor[k] + kChunkBytes;
        }
        void* out = p.cursor[k];
        p.cursor[k] += bytes;
        return out;
    }
#endif
    return ::operator new(size);
}

void VX_PoolFree(void* ptr, std::size_t size) noexcept {
    if (!ptr) return;
#ifndef VX_POOL_DISABLED
    const std::size_t cls = (size + kGranule - 1) / kGranule;
    if (cls >= 1 && cls <= kClasses) {
        Pool& p = ThePool();
        auto* n = static_cast<FreeNode*>(ptr);
        n->next = p.free[cls - 1];
        p.free[cls - 1] = n;
        return;
    }
#endif
    ::operator delete(ptr, size);
#ifdef VX_POOL_DISABLED
    (void)size;
#endif
}

std::size_t VX_PoolBytesReserved() {
#ifndef VX_POOL_DISABLED
    return ThePool().reserved;
#else
    return 0;
#endif
}
