// Default operations of the parameter types. As for the variable types, each value is a
// function-local static: built on first use, the same object afterwards, built again on the
// next call if its construction threw.
#include "types/parameter_types.hpp"

#include "zorexp/text.hpp"

#define VX_PT_DEFINE(NAME, cell, op, type)                                    \
    VX_IF_DECL(cell)(const VX_Value* VX_##NAME::op() const {                  \
        static const VX_Value value(static_cast<type>(VX_DECLARED(cell)), 0); \
        return &value;                                                        \
    })
#define VX_PT_DEFINE_INT(NAME, cell, op) \
    VX_IF_DECL(cell)(int VX_##NAME::op() const { return VX_DECLARED(cell); })

// The valid set and the value wrapping it are two statics, the set built first.
#define VX_OPTION_TYPE(NAME, DEFAULT, VALIDSET)               \
    VX_PT_DEFINE(NAME, DEFAULT, VX_DefaultVALUE, const char*) \
    const VX_Value* VX_##NAME::VX_DefaultVALID() const {      \
        static const VX_StrSetValue set(VALIDSET);            \
        static const VX_Value value(set, 0);                  \
        return &value;                                        \
    }

#define VX_INTEGER_TYPE(NAME, DEFAULT, LOWER, VALIDSET)                                        \
    VX_PT_DEFINE(NAME, DEFAULT, VX_DefaultVALUE, int)                                          \
    VX_PT_DEFINE(NAME, LOWER, VX_DefaultLOWER, int)                                            \
    VX_IF_DECL(VALIDSET)(                                                                      \
        const VX_Value* VX_##NAME::VX_DefaultVALID() const {                                   \
            static const VX_IntSetValue set(VX_DECLARED(VALIDSET));                            \
            static const VX_Value value(set, 0);                                               \
            return &value;                                                                     \
        }                                                                                      \
        VX_INTEGERSET& VX_##NAME::VALID() {                                                    \
            /* Made from an integer-set default, the property is an integer set. */            \
            return static_cast<VX_INTEGERSET&>(GetProperty("VALID", VX_DefaultVALID(), 0));    \
        }                                                                                      \
        VX_IntSetValue VX_##NAME::VX_VALIDValue() { return VX_IntSetValue(VALID().Shared()); } \
        /* Lookups may make the VALID property: it is part of the parameter, made lazily. */   \
        VX_Type* VX_##NAME::FindProperty(const char* name) const {                             \
            if (VX_EqualCI(name, "VALID")) return &const_cast<VX_##NAME*>(this)->VALID();      \
            return VX_INTEGERPARAMETER::FindProperty(name);                                    \
        }                                                                                      \
        VX_Type* VX_##NAME::FindPropertyById(int id) const {                                   \
            if (id == 1) return &const_cast<VX_##NAME*>(this)->VALID();                        \
            return VX_INTEGERPARAMETER::FindPropertyById(id - 1);                              \
        }                                                                                      \
        bool VX_##NAME::PropertyNameToId(const char* name, int& id) const {                    \
            ++id;                                                                              \
            if (VX_EqualCI(name, "VALID")) return true;                                        \
            return VX_INTEGERPARAMETER::PropertyNameToId(name, id);                            \
        })

#define VX_REAL_TYPE(NAME, DEFAULT, LOWER, UPPER, QUANTITY, UNIT, PQROW, PQCOL, DESCRIPTION) \
    VX_PT_DEFINE(NAME, DEFAULT, VX_DefaultVALUE, double)                                     \
    VX_PT_DEFINE(NAME, LOWER, VX_DefaultLOWER, double)                                       \
    VX_PT_DEFINE(NAME, UPPER, VX_DefaultUPPER, double)                                       \
    VX_PT_DEFINE(NAME, QUANTITY, VX_DefaultPHYSICALQUANTITY, const char*)                    \
    VX_PT_DEFINE(NAME, UNIT, VX_DefaultBASEUOMNAME, const char*)                             \
    VX_PT_DEFINE_INT(NAME, PQROW, VX_PQRow)                                                  \
    VX_PT_DEFINE_INT(NAME, PQCOL, VX_PQCol)                                                  \
    VX_IF_DECL(DESCRIPTION)(                                                                 \
        const char* VX_##NAME::VX_DefaultDESCRIPTION() const { return VX_DECLARED(DESCRIPTION); })

#define VX_LOGICAL_TYPE(NAME, DEFAULT) VX_PT_DEFINE(NAME, DEFAULT, VX_DefaultVALUE, bool)

#include "types/option_types.def"
#include "types/scalar_parameter_types.def"

#undef VX_OPTION_TYPE
#undef VX_INTEGER_TYPE
#undef VX_REAL_TYPE
#undef VX_LOGICAL_TYPE
#undef VX_PT_DEFINE
#undef VX_PT_DEFINE_INT
