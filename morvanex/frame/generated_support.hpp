#pragma once
// What the classes that tools/modelgen writes from model descriptions build on: the runtime,
// the array and reference templates, and the multiport classes of each port type.
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <vector>

#include "frame/arrays.hpp"
#include "frame/references.hpp"
#include "runtime/runtime.hpp"
#include "types/parameter_types.hpp"
#include "types/variable_types.hpp"

// The three multiports of a port type P: VX_MIP for inlets, VX_MOP for outlets, VX_MIOP for
// connections either way.
#define VX_MULTIPORT_CLASS(MARK, PORT, DIRECTION)                                        \
    class VX_##MARK##PORT : public VX_MULTIPORT<VX_##PORT> {                             \
    public:                                                                              \
        explicit VX_##MARK##PORT(bool = true) : VX_MULTIPORT<VX_##PORT>(DIRECTION) {}   \
        VX_##MARK##PORT(const VX_##MARK##PORT&) = default;                               \
        VX_##MARK##PORT& operator=(const VX_##MARK##PORT&) = default;                    \
    };
#define VX_MULTIPORT_CLASSES(PORT)          \
    VX_MULTIPORT_CLASS(MI, PORT, 4)         \
    VX_MULTIPORT_CLASS(MO, PORT, 8)         \
    VX_MULTIPORT_CLASS(MIO, PORT, 12)
