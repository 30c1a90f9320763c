#pragma once
// The parameter types of the library: option (string) types from option_types.def, integer,
// real and logical types from scalar_parameter_types.def. Each type derives directly from its
// runtime root and, like the variable types, overrides only the defaults it declares; only the
// most-derived constructor initialises.
#include "types/type_table_cells.hpp"
#include "zorexp/parameters.hpp"
#include "zorexp/sets.hpp"

// Constructor, copy and dereference common to every parameter type.
#define VX_PT_COMMON(NAME, ROOT)                               \
public:                                                        \
    explicit VX_##NAME(bool initialize = true) : ROOT(false) { \
        if (initialize) InitializeSystemAttributes();          \
    }                                                          \
    VX_##NAME(const VX_##NAME&) = default;                     \
    VX_##NAME& operator=(const VX_##NAME& o) {                 \
        ROOT::operator=(o);                                    \
        return *this;                                          \
    }                                                          \
    ~VX_##NAME() override = default;                           \
    VX_##NAME& operator*() { return *this; }

#define VX_PT_OVERRIDE(cell, op) VX_IF_DECL(cell)(const VX_Value* op() const override;)
#define VX_PT_OVERRIDE_INT(cell, op) VX_IF_DECL(cell)(int op() const override;)

// Option types: a default text and the closed set of valid values (empty: any value, the
// members being supplied at run time).
#define VX_OPTION_TYPE(NAME, DEFAULT, VALIDSET)           \
    class VX_##NAME : public VX_STRINGPARAMETER {         \
        VX_PT_COMMON(NAME, VX_STRINGPARAMETER)            \
        VX_PT_OVERRIDE(DEFAULT, VX_DefaultVALUE)          \
        const VX_Value* VX_DefaultVALID() const override; \
    };

// The runtime's integer parameter has no valid set of its own; a type that declares one adds
// it as the extra property "VALID", which takes the first property identifier of the type.
#define VX_INTEGER_TYPE(NAME, DEFAULT, LOWER, VALIDSET)                            \
    class VX_##NAME : public VX_INTEGERPARAMETER {                                 \
        VX_PT_COMMON(NAME, VX_INTEGERPARAMETER)                                    \
        VX_PT_OVERRIDE(DEFAULT, VX_DefaultVALUE)                                   \
        VX_PT_OVERRIDE(LOWER, VX_DefaultLOWER)                                     \
        VX_IF_DECL(VALIDSET)(                                                      \
            /* The declared valid set as a value (a static built on first use). */ \
            const VX_Value* VX_DefaultVALID() const;                               \
            /* The "VALID" property, made from VX_DefaultVALID() on first use. */  \
            VX_INTEGERSET& VALID();                                                \
            /* The current valid set. */                                           \
            VX_IntSetValue VX_VALIDValue();                                        \
            VX_Type* FindProperty(const char* name) const override;                \
            VX_Type* FindPropertyById(int id) const override;                      \
            bool PropertyNameToId(const char* name, int& id) const override;)      \
    };

#define VX_REAL_TYPE(NAME, DEFAULT, LOWER, UPPER, QUANTITY, UNIT, PQROW, PQCOL, DESCRIPTION) \
    class VX_##NAME : public VX_REALPARAMETER {                                              \
        VX_PT_COMMON(NAME, VX_REALPARAMETER)                                                 \
        VX_PT_OVERRIDE(DEFAULT, VX_DefaultVALUE)                                             \
        VX_PT_OVERRIDE(LOWER, VX_DefaultLOWER)                                               \
        VX_PT_OVERRIDE(UPPER, VX_DefaultUPPER)                                               \
        VX_PT_OVERRIDE(QUANTITY, VX_DefaultPHYSICALQUANTITY)                                 \
        VX_PT_OVERRIDE(UNIT, VX_DefaultBASEUOMNAME)                                          \
        VX_PT_OVERRIDE_INT(PQROW, VX_PQRow)                                                  \
        VX_PT_OVERRIDE_INT(PQCOL, VX_PQCol)                                                  \
        VX_IF_DECL(DESCRIPTION)(const char* VX_DefaultDESCRIPTION() const override;)         \
    };

#define VX_LOGICAL_TYPE(NAME, DEFAULT)             \
    class VX_##NAME : public VX_LOGICALPARAMETER { \
        VX_PT_COMMON(NAME, VX_LOGICALPARAMETER)    \
        VX_PT_OVERRIDE(DEFAULT, VX_DefaultVALUE)   \
    };

#include "types/option_types.def"
#include "types/scalar_parameter_types.def"

#undef VX_OPTION_TYPE
#undef VX_INTEGER_TYPE
#undef VX_REAL_TYPE
#undef VX_LOGICAL_TYPE
#undef VX_PT_COMMON
#undef VX_PT_OVERRIDE
#undef VX_PT_OVERRIDE_INT
