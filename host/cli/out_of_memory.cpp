#include "out_of_memory.hpp"

#include <cstddef>
#include <new>

namespace zorexp_cli {
namespace {

constexpr std::size_t kReserveBytes = std::size_t{8} << 20;
char* g_reserve = nullptr;

// operator new calls this when an allocation fails and then tries again. The first time, the
// reserve is given back (a small allocation may then succeed); after that the failure is
// thrown as std::bad_alloc, as without a handler.
void GiveBackReserve() {
    if (g_reserve) {
        delete[] g_reserve;
        g_reserve = nullptr;
        return;
    }
    std::set_new_handler(nullptr);
    throw std::bad_alloc();
}

}  // namespace

void InstallOutOfMemoryReserve() {
    g_reserve = new (std::nothrow) char[kReserveBytes];
    std::set_new_handler(&GiveBackReserve);
}

}  // namespace zorexp_cli
