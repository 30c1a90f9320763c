// Default operations of the variable types. Each value is a function-local static: built on
// the first call, the same object on every later call, built again on the next call if its
// construction threw, destroyed when the library is unloaded.
#include "types/variable_types.hpp"

#define VX_VT_DEFINE(NAME, cell, op, type)                                    \
    VX_IF_DECL(cell)(const VX_Value* VX_##NAME::op() const {                  \
        static const VX_Value value(static_cast<type>(VX_DECLARED(cell)), 0); \
        return &value;                                                        \
    })
#define VX_VT_DEFINE_INT(NAME, cell, op) \
    VX_IF_DECL(cell)(int VX_##NAME::op() const { return VX_DECLARED(cell); })

#define VX_VARIABLE_TYPE(NAME, BASE, VALUE, LOWER, UPPER, SCALE, QUANTITY, UNIT, PQROW, PQCOL) \
    VX_VT_DEFINE_INT(NAME, PQCOL, VX_PQCol)                                                    \
    VX_VT_DEFINE_INT(NAME, PQROW, VX_PQRow)                                                    \
    VX_VT_DEFINE(NAME, VALUE, VX_DefaultVALUE, double)                                         \
    VX_VT_DEFINE(NAME, LOWER, VX_DefaultLOWER, double)                                         \
    VX_VT_DEFINE(NAME, QUANTITY, VX_DefaultPHYSICALQUANTITY, const char*)                      \
    VX_VT_DEFINE(NAME, UNIT, VX_DefaultBASEUOMNAME, const char*)                               \
    VX_VT_DEFINE(NAME, SCALE, VX_DefaultSCALE, double)                                         \
    VX_VT_DEFINE(NAME, UPPER, VX_DefaultUPPER, double)
#include "types/variable_types.def"
#undef VX_VARIABLE_TYPE
#undef VX_VT_DEFINE
#undef VX_VT_DEFINE_INT
