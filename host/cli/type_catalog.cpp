#include "type_catalog.hpp"

#include <array>

#include "types/parameter_types.hpp"
#include "types/variable_types.hpp"
#include "zorexp/text.hpp"

namespace zorexp_cli {
namespace {

template <class T>
VX_VarParam* Make() { return new T(true); }

constexpr TypeEntry kTypes[] = {
#define VX_VARIABLE_TYPE(NAME, BASE, ...) {#NAME, #BASE, TypeFamily::Variable, &Make<VX_##NAME>},
#include "types/variable_types.def"
#undef VX_VARIABLE_TYPE
#define VX_INTEGER_TYPE(NAME, ...) {#NAME, "INTEGERPARAMETER", TypeFamily::IntegerParameter, &Make<VX_##NAME>},
#define VX_REAL_TYPE(NAME, ...) {#NAME, "REALPARAMETER", TypeFamily::RealParameter, &Make<VX_##NAME>},
#define VX_LOGICAL_TYPE(NAME, ...) {#NAME, "LOGICALPARAMETER", TypeFamily::LogicalParameter, &Make<VX_##NAME>},
#include "types/scalar_parameter_types.def"
#undef VX_INTEGER_TYPE
#undef VX_REAL_TYPE
#undef VX_LOGICAL_TYPE
#define VX_OPTION_TYPE(NAME, ...) {#NAME, "STRINGPARAMETER", TypeFamily::OptionParameter, &Make<VX_##NAME>},
#include "types/option_types.def"
#undef VX_OPTION_TYPE
};

}  // namespace

const char* FamilyKindText(TypeFamily family) {
    return family == TypeFamily::Variable ? "variable type" : "parameter type";
}

std::span<const TypeEntry> TypeCatalog() { return kTypes; }

const TypeEntry* FindTypeEntry(std::string_view name) {
    const std::string key(name);
    for (const TypeEntry& e : kTypes)
        if (VX_EqualCI(e.name, key.c_str())) return &e;
    return nullptr;
}

void DestroyType::operator()(VX_VarParam* p) const {
    if (p) p->Destroy();
}

}  // namespace zorexp_cli
