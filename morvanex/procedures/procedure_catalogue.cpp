#include "procedures/procedure_catalogue.hpp"

#include <cctype>

#include "procedures/procedure_declarations.hpp"

namespace {

#define VX_PROCEDURE(NAME, ...) &VXProc_##NAME::kDeclaration,
constexpr const VX_ProcedureDeclaration* kCatalogue[] = {
#include "procedures/procedures.def"
};
#undef VX_PROCEDURE

bool EqualCI(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i]))) return false;
    return true;
}

}  // namespace

std::span<const VX_ProcedureDeclaration* const> VX_ProcedureCatalogue() { return kCatalogue; }

const VX_ProcedureDeclaration* VX_FindProcedureDeclaration(std::string_view name) {
    if (name.size() > 7 && EqualCI(name.substr(0, 7), "VXProc_")) name.remove_prefix(7);
    for (const VX_ProcedureDeclaration* d : kCatalogue)
        if (EqualCI(name, d->name)) return d;
    return nullptr;
}
