#include "flowsheet/set_application.hpp"

#include <optional>

#include "flowsheet/flowsheet_document.hpp"
#include "flowsheet/input_error.hpp"
#include "flowsheet/value_conversion.hpp"
#include "paths/property_paths.hpp"
#include "zorexp/zorexp.hpp"

namespace zx::flowsheet {
namespace {

struct AttributeName {
    const char* key;
    VX_Attr attr;
};
// The order attributes are applied in: the spec first, bounds before the value.
constexpr AttributeName kAttributes[] = {
    {"spec", VX_ATTR_SPEC}, {"lower", VX_ATTR_LOWER}, {"upper", VX_ATTR_UPPER}, {"value", VX_ATTR_VALUE}};

// Where a value stands in the file and how users name its target. Values nest (a list in an
// attribute object of an array in a port), so a site is a chain from the set entry down; the
// pointer and name texts are built only when a message needs them.
struct Site {
    const Site* parent = nullptr;
    const std::string* rootPointer = nullptr;   // the entry's pointer and name, at the root
    const std::string* rootName = nullptr;
    std::string_view key;                       // pointer step: a key, or
    std::size_t item = 0;                       // a list position
    bool keyed = true;
    std::string_view member;                    // name step: ".member" or "(index)", or
    const VX_Matrix* array = nullptr;           // the element of array at position
    int position = 0;
    SourcePos pos;

    std::string Pointer() const {
        if (!parent) return *rootPointer;
        const std::string head = parent->Pointer();
        if (keyed && key.empty()) return head;
        return keyed ? PointerChild(head, key) : PointerChild(head, item);
    }
    std::string Name() const {
        if (!parent) return *rootName;
        if (array) return parent->Name() + "(" + array->IndexText(position) + ")";
        return parent->Name() + std::string(member);
    }
    // A site one step down: the same target at a key or list item of the value.
    Site AtKey(std::string_view k, SourcePos p) const {
        Site s;
        s.parent = this;
        s.key = k;
        s.pos = p;
        return s;
    }
    Site AtItem(std::size_t k, SourcePos p) const {
        Site s;
        s.parent = this;
        s.item = k;
        s.keyed = false;
        s.pos = p;
        return s;
    }
};

[[noreturn]] void Refused(const Site& site, const char* attr, const std::string& why, SourcePos pos) {
    const std::string name = site.Name();
    throw InputError(site.Pointer(), (std::string(attr) == "value" ? name : name + " " + attr) + ": " + why,
                     pos.Known() ? pos : site.pos);
}

[[noreturn]] void Fault(const Site& site, const std::string& message) {
    throw InputError(site.Pointer(), message, site.pos);
}

// Assigns one attribute as a user value, in unit when one is given; refusals name the site.
void Assign(VX_VarParam& target, VX_Attr attr, const char* attrKey, const InputValue& value, const Site& site,
            std::string_view unit = {}) {
    ConversionRefusal refusal;
    std::optional<VX_Value> v = RuntimeValue(target, attr, value, refusal, unit);
    if (!v) Refused(site, attrKey, refusal.why, refusal.pos);
    std::string why;
    if (target.AssignUser(attr, *v, &why) == VX_AS_REFUSED) Refused(site, attrKey, why, value.Pos());
}

// Lower and upper bounds are applied so that the pair never crosses on the way: the new lower
// bound (in the base unit) is compared with the current upper one.
bool UpperFirst(const VX_VarParam& target, const InputValue& object, std::string_view unit) {
    if (target.GetKind() != VX_VarParam::RealVariable) return false;
    const InputValue* lower = object.Find("lower");
    if (!lower) return false;
    ConversionRefusal ignored;   // a lower bound that does not convert is refused when it is applied
    const std::optional<VX_Value> v = RuntimeValue(target, VX_ATTR_LOWER, *lower, ignored, unit);
    return v && (v->GetKind() == VX_Value::Real || v->GetKind() == VX_Value::Integer) && v->RealValue() > static_cast<const VX_Variable&>(target).Upper();
}

void ApplyAt(VX_Type& target, const InputValue& value, const Site& site);

// The unit an attribute object gives its value and bounds ("" for none).
std::string_view UnitOf(const InputValue& object, const Site& site) {
    const InputValue* unit = object.Find("unit");
    if (!unit) return {};
    if (unit->GetKind() != InputValue::Kind::Text || unit->Text().empty())
        throw InputError(PointerChild(site.Pointer(), "unit"), site.Name() + ": \"unit\" must be a unit text such as \"K\", not " + unit->Brief(),
                         unit->Pos());
    return unit->Text();
}

void ApplyToValue(VX_VarParam& target, const InputValue& value, const Site& site) {
    if (value.GetKind() != InputValue::Kind::Object) return Assign(target, VX_ATTR_VALUE, "value", value, site);
    for (const InputMember& m : value.Members())
        if (!IsAttributeKey(m.key))
            throw InputError(PointerChild(site.Pointer(), m.key),
                             site.Name() + ": unknown attribute \"" + VX_BriefText(m.key) + "\" (value, spec, lower, upper, unit)", m.keyPos);
    const std::string_view unit = UnitOf(value, site);
    const bool upperFirst = UpperFirst(target, value, unit);
    for (int pass = 0; pass < 4; ++pass) {
        int k = pass;
        if (upperFirst && (pass == 1 || pass == 2)) k = 3 - pass;
        const AttributeName& a = kAttributes[k];
        if (const InputValue* v = value.Find(a.key)) Assign(target, a.attr, a.key, *v, site.AtKey(a.key, v->Pos()), unit);
    }
}

void CheckLength(const VX_Matrix& array, const InputValue& list, const Site& site) {
    if (list.Size() != static_cast<std::size_t>(array.Size()))
        Fault(site, site.Name() + " has " + std::to_string(array.Size()) + " elements, the list gives " + std::to_string(list.Size()));
}

// One value per element, in set order.
void ApplyList(VX_Matrix& array, const InputValue& list, const Site& site) {
    CheckLength(array, list, site);
    list.ForEachItem([&](const InputValue& v, std::size_t k) {
        if (VX_Type* e = array.At(static_cast<int>(k))) {
            Site at = site.AtItem(k, v.Pos());
            at.array = &array;
            at.position = static_cast<int>(k);
            ApplyAt(*e, v, at);
        }
        return true;
    });
}

// The element an index text names ("3", "A", "A,1"), as the path of the element from the
// block resolves it.
VX_Type* FindElement(VX_Matrix& array, const std::string& index, std::string& problem) {
    VX_Type* top = &array;
    while (top->Owner()) top = top->Owner();
    auto found = zorexp_cli::ResolvePath(*top, array.Path() + "(" + index + ")");
    problem = found.problem;
    return found.object;
}

// An object keyed by index: {"1": 300.0, "4": {"value": 310.0, "spec": "Fixed"}}.
void ApplyKeyed(VX_Matrix& array, const InputValue& object, const Site& site) {
    for (const InputMember& m : object.Members()) {
        Site at = site.AtKey(m.key, m.keyPos);
        const std::string index = "(" + m.key + ")";
        at.member = index;
        std::string problem;
        VX_Type* element = FindElement(array, m.key, problem);
        if (!element) Fault(at, site.Name() + ": " + problem);
        at.pos = m.value.Pos();
        ApplyAt(*element, m.value, at);
    }
}

// Attributes for every element: one value for all, or a list in set order.
void ApplyAttributes(VX_Matrix& array, const InputValue& object, const Site& site) {
    const std::string_view unit = UnitOf(object, site);
    for (const AttributeName& a : kAttributes) {
        const InputValue* v = object.Find(a.key);
        if (!v) continue;
        const Site at = site.AtKey(a.key, v->Pos());
        const bool perElement = v->GetKind() == InputValue::Kind::List;
        if (perElement) CheckLength(array, *v, at);
        // One value for every element is converted once, for the kind of the first element.
        std::optional<VX_Value> every;
        for (int k = 0; k < array.Size(); ++k) {
            VX_Type* e = array.At(k);
            if (!e) continue;
            Site element = at;   // named as the element, located at the attribute
            element.array = &array;
            element.position = k;
            if (!e->IsValue()) Fault(element, element.Name() + " is not a variable or parameter: it has no " + a.key);
            auto& target = static_cast<VX_VarParam&>(*e);
            if (perElement) {
                const auto item = static_cast<std::size_t>(k);
                if (v->IsNumberList()) {
                    const InputValue number = v->NumberItem(item);
                    Assign(target, a.attr, a.key, number, element.AtItem(item, number.Pos()), unit);
                } else {
                    Assign(target, a.attr, a.key, v->Items()[item], element.AtItem(item, v->Items()[item].Pos()), unit);
                }
                continue;
            }
            if (!every) {
                ConversionRefusal refusal;
                every = RuntimeValue(target, a.attr, *v, refusal, unit);
                if (!every) Refused(at, a.key, refusal.why, refusal.pos);
            }
            std::string why;
            if (target.AssignUser(a.attr, *every, &why) == VX_AS_REFUSED) Refused(element, a.key, why, v->Pos());
        }
    }
}

void ApplyToArray(VX_Matrix& array, const InputValue& value, const Site& site) {
    if (value.GetKind() == InputValue::Kind::List) return ApplyList(array, value, site);
    if (value.GetKind() != InputValue::Kind::Object)
        Fault(site, site.Name() + " is an array: give a list in set order, an object keyed by index or "
                                  "{\"value\": ...} for every element, not " + value.Brief());
    if (IsAttributeObject(value)) return ApplyAttributes(array, value, site);
    ApplyKeyed(array, value, site);
}

void ApplyToContainer(VX_Type& container, const InputValue& value, const Site& site) {
    if (value.GetKind() != InputValue::Kind::Object)
        Fault(site, site.Name() + " holds properties: give an object of their paths and values, not " + value.Brief());
    for (const InputMember& m : value.Members()) {
        Site at = site.AtKey(m.key, m.keyPos);
        const std::string member = "." + m.key;
        at.member = member;
        auto found = zorexp_cli::ResolvePath(container, m.key);
        if (!found.object) Fault(at, site.Name() + ": " + found.problem);
        at.pos = m.value.Pos();
        ApplyAt(*found.object, m.value, at);
    }
}

void ApplyAt(VX_Type& target, const InputValue& value, const Site& site) {
    if (target.IsValue()) return ApplyToValue(static_cast<VX_VarParam&>(target), value, site);
    if (auto* array = dynamic_cast<VX_Matrix*>(&target)) return ApplyToArray(*array, value, site);
    if (dynamic_cast<VX_Container*>(&target)) return ApplyToContainer(target, value, site);
    Fault(site, site.Name() + " cannot be set (it is a reference that is not linked)");
}

}  // namespace

void ApplyValue(VX_Type& target, const InputValue& value, const std::string& pointer, const std::string& name) {
    Site root;
    root.rootPointer = &pointer;
    root.rootName = &name;
    root.pos = value.Pos();
    try {
        ApplyAt(target, value, root);
    } catch (const VX_SizeLimitError& e) {
        // A set that sizes arrays beyond the limit of array elements.
        throw InputError(pointer, name + ": " + e.what() + kSizeLimitHint, value.Pos());
    }
}

}  // namespace zx::flowsheet
