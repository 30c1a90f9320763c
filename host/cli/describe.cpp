#include "describe.hpp"

#include "describe_type.hpp"
#include "errors.hpp"
#include "frame/registry.hpp"
#include "type_catalog.hpp"
#include "zorexp/text.hpp"

namespace zorexp_cli {
namespace {

DescribeResult DescribeNamed(const std::string& name, const ContainerRequest& request, bool& found) {
    found = true;
    if (const VX_RegistryEntry* c = VX_RegistryFind(name.c_str())) return DescribeContainer(*c, request);
    if (const TypeEntry* t = FindTypeEntry(name)) {
        if (!request.assignments.empty() || !request.components.empty())
            throw BadInput(std::string(t->name) + " is a " + FamilyKindText(t->family) +
                           ": it has no properties or components to set");
        return DescribeType(*t);
    }
    found = false;
    return {};
}

}  // namespace

DescribeResult Describe(const std::string& typeName, const ContainerRequest& request) {
    bool found = false;
    DescribeResult result = DescribeNamed(typeName, request, found);
    if (!found && typeName.size() > 3 && VX_EqualCI(typeName.substr(0, 3).c_str(), "VX_"))
        result = DescribeNamed(typeName.substr(3), request, found);
    if (!found) throw BadInput("unknown type \"" + VX_BriefText(typeName) + "\" (zorexp types lists them all)");
    return result;
}

}  // namespace zorexp_cli
