#include "types_listing.hpp"

#include "frame/registry.hpp"
#include "type_catalog.hpp"

namespace zorexp_cli {

std::vector<TypeListing> ListTypes() {
    std::vector<TypeListing> out;
    for (const VX_RegistryEntry& e : VX_RegistryEntries())
        out.push_back({e.name, e.kind, e.base, e.containerId, e.modelled, e.exported, e.equationsDefined});
    for (const TypeEntry& t : TypeCatalog())
        out.push_back({t.name, FamilyKindText(t.family), t.base, {}, {}, {}, {}});
    return out;
}

}  // namespace zorexp_cli
