#include "property_inspection.hpp"

#include <climits>

#include "zorexp/zorexp.hpp"

namespace zorexp_cli {
namespace {

void ReadUnits(Attributes& a, const VX_Value* quantity, const VX_Value* unit, int row, int col) {
    if (quantity && !quantity->TextValue().empty()) a.quantity = quantity->TextValue();
    if (unit && !unit->TextValue().empty()) a.unit = unit->TextValue();
    if (row != 0 || col != 0) {   // 0/0: no entry in the units table
        a.row = row;
        a.col = col;
    }
}

std::vector<int> IntMembers(const VX_IntSetData& set) {
    std::vector<int> out;
    out.reserve(set.Size());
    for (const auto& [low, high] : set.Ranges())
        for (int i = low;; ++i) {
            out.push_back(i);
            if (i == high) break;
        }
    return out;
}

// The element type of an array: its first element's type, or, for an empty array, the type
// argument of the array template ("ARRAY_I<VX_TEMPERATURE>" gives "TEMPERATURE").
std::string ElementTypeName(const VX_Matrix& array) {
    for (int k = 0; k < array.Size(); ++k)
        if (const VX_Type* e = array.At(k)) return e->TypeName();
    const std::string name = array.TypeName();
    const auto open = name.find('<');
    if (open == std::string::npos) return name;
    auto end = name.find_first_of(",>", open + 1);
    std::string arg = name.substr(open + 1, end == std::string::npos ? std::string::npos : end - open - 1);
    if (arg.rfind("VX_", 0) == 0) arg.erase(0, 3);
    return arg;
}

PropertyReport Inspect(const VX_Type& object, const char* description);

void InspectInto(PropertyReport& r, const VX_Type& object) {
    if (auto* vp = dynamic_cast<const VX_VarParam*>(&object)) {
        r.kind = vp->KindName();
        r.type = vp->TypeName();
        r.attributes = ReadAttributes(*vp);
    } else if (auto* array = dynamic_cast<const VX_Matrix*>(&object)) {
        r.kind = "array";
        r.type = ElementTypeName(*array);
        r.elements.emplace();
        for (int k = 0; k < array->Size(); ++k)
            if (const VX_Type* e = array->At(k)) r.elements->push_back(Inspect(*e, nullptr));
    } else if (auto* global = dynamic_cast<const VX_GlobalBase*>(&object)) {
        if (const VX_Type* target = global->Target()) InspectInto(r, *target);
        r.kind = "global " + (r.kind.empty() ? std::string("reference") : r.kind);
    } else if (auto* external = dynamic_cast<const VX_ExternalBase*>(&object)) {
        r.kind = "external reference";
        if (const VX_Type* target = external->Target()) r.type = target->TypeName();
    } else if (auto* holder = dynamic_cast<const VX_VirtualBase*>(&object)) {
        if (const VX_Type* target = holder->Target()) InspectInto(r, *target);
        r.kind = "virtual " + (r.kind.empty() ? std::string("member") : r.kind);
    } else if (auto* container = dynamic_cast<const VX_Container*>(&object)) {
        r.kind = container->IsAPort() ? "port" : container->IsStructureType() ? "structure" : "model";
        r.type = container->TypeName();
        r.properties = InspectProperties(*container);
    } else {
        r.kind = "object";
        r.type = object.TypeName();
    }
}

PropertyReport Inspect(const VX_Type& object, const char* description) {
    PropertyReport r;
    r.name = object.Path();
    if (description) r.description = description;
    InspectInto(r, object);
    return r;
}

}  // namespace

Attributes ReadAttributes(const VX_VarParam& object) {
    Attributes a;
    switch (object.GetKind()) {
    case VX_VarParam::RealVariable: {
        const auto& v = static_cast<const VX_Variable&>(object);
        a.value = v.fv();
        a.lower = v.Lower();
        a.upper = v.Upper();
        if (const char* spec = VX_SpecText(v.CurrSpec())) a.spec = spec;
        ReadUnits(a, v.VX_DefaultPHYSICALQUANTITY(), v.VX_DefaultBASEUOMNAME(), v.VX_PQRow(), v.VX_PQCol());
        break;
    }
    case VX_VarParam::IntegerParameter: {
        const auto& p = static_cast<const VX_INTEGERPARAMETER&>(object);
        a.value = p.fv();
        if (p.Lower() != INT_MIN) a.lower = p.Lower();   // the runtime's integers are unbounded
        if (p.Upper() != INT_MAX) a.upper = p.Upper();   // unless their type says otherwise
        if (auto* valid = dynamic_cast<const VX_INTEGERSET*>(p.FindProperty("VALID"))) {
            a.valid.emplace();
            for (int i : IntMembers(valid->fv())) a.valid->emplace_back(std::in_place_type<int>, i);
        }
        break;
    }
    case VX_VarParam::RealParameter: {
        const auto& p = static_cast<const VX_REALPARAMETER&>(object);
        a.value = p.fv();
        a.lower = p.Lower();
        a.upper = p.Upper();
        ReadUnits(a, p.VX_DefaultPHYSICALQUANTITY(), p.VX_DefaultBASEUOMNAME(), p.VX_PQRow(), p.VX_PQCol());
        break;
    }
    case VX_VarParam::StringParameter: {
        const auto& p = static_cast<const VX_STRINGPARAMETER&>(object);
        if (*p.fv()) a.value = std::string(p.fv());
        a.valid.emplace();
        for (const std::string& m : p.Valid().Members()) a.valid->emplace_back(std::in_place_type<std::string>, m);
        break;
    }
    case VX_VarParam::LogicalParameter:
        a.value = static_cast<const VX_LOGICALPARAMETER&>(object).fv();
        break;
    case VX_VarParam::IntegerSet:
        a.value = IntMembers(static_cast<const VX_INTEGERSET&>(object).fv());
        break;
    case VX_VarParam::StringSet:
        a.value = static_cast<const VX_STRINGSET&>(object).fv().Members();
        break;
    }
    return a;
}

std::vector<PropertyReport> InspectProperties(const VX_Container& container) {
    std::vector<PropertyReport> out;
    out.reserve(container.Properties().size());
    for (const VX_PropertyEntry& p : container.Properties())
        if (p.object) out.push_back(Inspect(*p.object, p.description));
    return out;
}

}  // namespace zorexp_cli
