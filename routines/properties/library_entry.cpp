// The two entries every property routine library exports: its interface version (dense
// routines only) and the hand-over of the host's services.
#include <zorexp/routine_library.h>

#include "property_services.hpp"

extern "C" __attribute__((visibility("default"))) int zorexp_routine_interface(void) { return ZOREXP_ROUTINE_INTERFACE_DENSE; }

extern "C" __attribute__((visibility("default"))) void zorexp_routine_attach(const zorexp_host_services* services) {
    zx::routines::AttachServices(services);
}
