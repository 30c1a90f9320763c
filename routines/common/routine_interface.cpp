// The two exports every routine library made by zx_routine_library has: the interface version it
// reports (ZX_ROUTINE_INTERFACE) and the hook through which the runtime hands over its services.
// Sources another folder adds to the library (target_sources) that keep the services themselves
// define zx_routine_library_attached, which is then told of them too.
#include "routine_support.hpp"

extern "C" void zx_routine_library_attached(const zorexp_host_services* services) __attribute__((weak));

namespace {
const zorexp_host_services* g_services = nullptr;
}

ZX_ROUTINE int zorexp_routine_interface(void) { return ZX_ROUTINE_INTERFACE; }

ZX_ROUTINE void zorexp_routine_attach(const zorexp_host_services* services) {
    g_services = services;
    if (zx_routine_library_attached) zx_routine_library_attached(services);
}

const zorexp_host_services* zx::routine_support::Services() { return g_services; }
