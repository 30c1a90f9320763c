#pragma once
// The variable types of the library: one class VX_<NAME> per row of variable_types.def.
// A type has no data; it overrides the runtime's default operations for exactly the
// attributes it declares and inherits the rest from its base. Only the most-derived
// constructor initialises the attributes (bases are built with the flag false), so the runtime
// reads the most-derived overrides.
#include "types/type_table_cells.hpp"
#include "zorexp/variable.hpp"

// Declares the override of one default operation when the row declares that attribute.
#define VX_VT_OVERRIDE(cell, op) VX_IF_DECL(cell)(const VX_Value* op() const override;)
#define VX_VT_OVERRIDE_INT(cell, op) VX_IF_DECL(cell)(int op() const override;)

#define VX_VARIABLE_TYPE(NAME, BASE, VALUE, LOWER, UPPER, SCALE, QUANTITY, UNIT, PQROW, PQCOL) \
    class VX_##NAME : public VX_##BASE {                                                       \
    public:                                                                                    \
        explicit VX_##NAME(bool initialize = true) : VX_##BASE(false) {                        \
            if (initialize) InitializeSystemAttributes();                                      \
        }                                                                                      \
        VX_##NAME(const VX_##NAME&) = default;                                                 \
        VX_##NAME& operator=(const VX_##NAME& o) {                                             \
            VX_##BASE::operator=(o);                                                           \
            return *this;                                                                      \
        }                                                                                      \
        ~VX_##NAME() override = default;                                                       \
        VX_##NAME& operator*() { return *this; }                                               \
        VX_VT_OVERRIDE_INT(PQCOL, VX_PQCol)                                                    \
        VX_VT_OVERRIDE_INT(PQROW, VX_PQRow)                                                    \
        VX_VT_OVERRIDE(VALUE, VX_DefaultVALUE)                                                 \
        VX_VT_OVERRIDE(LOWER, VX_DefaultLOWER)                                                 \
        VX_VT_OVERRIDE(QUANTITY, VX_DefaultPHYSICALQUANTITY)                                   \
        VX_VT_OVERRIDE(UNIT, VX_DefaultBASEUOMNAME)                                            \
        VX_VT_OVERRIDE(SCALE, VX_DefaultSCALE)                                                 \
        VX_VT_OVERRIDE(UPPER, VX_DefaultUPPER)                                                 \
    };
#include "types/variable_types.def"
#undef VX_VARIABLE_TYPE
#undef VX_VT_OVERRIDE
#undef VX_VT_OVERRIDE_INT
