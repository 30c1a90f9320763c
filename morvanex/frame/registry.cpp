// Registry table: filled from registry.def.
#include "frame/registry.hpp"

#include "frame/registry_macros.hpp"

namespace {

constexpr VX_RegistryEntry kEntries[] = {
#define VX_CONTAINER(NAME, KIND, BASE, EXPORTS, CONTENT) \
    {#NAME, #KIND, #BASE, VX_ROW_IS_EXPORTED(EXPORTS), VX_ROW_IS_MODELLED(CONTENT), VX_CONTAINER_ID(KIND, NAME), VX_ROW_HAS_EQUATIONS(CONTENT)},
#include "frame/registry.def"
#undef VX_CONTAINER
};

char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool EqualIgnoringCase(const char* a, const char* b) {
    for (; Lower(*a) == Lower(*b); ++a, ++b)
        if (*a == '\0') return true;
    return false;
}

}  // namespace

std::span<const VX_RegistryEntry> VX_RegistryEntries() { return kEntries; }

const VX_RegistryEntry* VX_RegistryFind(const char* name) {
    if (!name) return nullptr;
    for (const VX_RegistryEntry& e : kEntries)
        if (EqualIgnoringCase(e.name, name)) return &e;
    return nullptr;
}
