#include "describe_type.hpp"

#include "property_inspection.hpp"
#include "zorexp/varparam.hpp"

namespace zorexp_cli {

TypeReport DescribeType(const TypeEntry& entry) {
    TypeObject object = MakeTypeObject(entry);
    TypeReport report{entry.name, std::string("VX_") + entry.name, FamilyKindText(entry.family), entry.base, {}, {}};
    report.attributes = ReadAttributes(*object);
    report.attributes.spec.reset();   // a spec belongs to a variable, not to its type
    if (const char* d = object->VX_DefaultDESCRIPTION(); d && *d) report.description = d;
    return report;
}

}  // namespace zorexp_cli
