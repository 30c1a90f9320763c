// The two exports every routine library of this project has: the interface version it reports
// (ZX_ROUTINE_INTERFACE, set by zx_routine_library) and the hook through which the runtime hands
// over its services.
#include "routine_support.hpp"

namespace {
const zorexp_host_services* g_services = nullptr;
}

ZX_ROUTINE int zorexp_routine_interface(void) { return ZX_ROUTINE_INTERFACE; }
ZX_ROUTINE void zorexp_routine_attach(const zorexp_host_services* services) { g_services = services; }

const zorexp_host_services* zx::routine_support::Services() { return g_services; }
