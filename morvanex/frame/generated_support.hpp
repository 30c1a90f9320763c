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
#include "procedures/procedure_declarations.hpp"
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

// A whole array as a procedure argument: its dimension sizes, then its elements in the array's
// order (the last index fastest).
inline void VX_ArrayArgument(VX_ProcedureType& p, const VX_Matrix& array) {
    p.Argument();
    for (int d = 0; d < array.Dimensions(); ++d) p.SetDimensionSize(array.DimSize(d));
    for (int k = 0; k < array.Size(); ++k) p.Element(static_cast<VX_VarParam&>(*array.At(k)));
}
