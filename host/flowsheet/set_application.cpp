#include "flowsheet/set_application.hpp"

#include <optional>

#include "paths/property_paths.hpp"
#include "flowsheet/flowsheet_document.hpp"
#include "flowsheet/input_error.hpp"
#include "flowsheet/json_values.hpp"
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

std::optional<VX_Value> Convert(VX_Attr attr, const Json& value, std::string& why) {
    return attr == VX_ATTR_SPEC ? SpecFromJson(value, &why) : ValueFromJson(value, &why);
}

// Assigns one attribute; the refusal text, or nothing when assigned.
std::optional<std::string> Assign(VX_VarParam& target, VX_Attr attr, const VX_Value& value) {
    std::string why;
    if (target.AssignUser(attr, value, &why) == VX_AS_REFUSED) return why;
    return std::nullopt;
}
std::optional<std::string> Assign(VX_VarParam& target, VX_Attr attr, const Json& value) {
    std::string why;
    std::optional<VX_Value> v = Convert(attr, value, why);
    if (!v) return why;
    return Assign(target, attr, *v);
}

[[noreturn]] void Refused(const std::string& pointer, const std::string& name, const char* attr, const std::string& why) {
    const std::string what = std::string(attr) == "value" ? name : name + " " + attr;
    throw InputError(pointer, what + ": " + why);
}

// Lower and upper bounds are applied so that the pair never crosses on the way.
bool UpperFirst(const VX_VarParam& target, const Json& object) {
    if (target.GetKind() != VX_VarParam::RealVariable || !object.contains("lower")) return false;
    const Json& lower = object["lower"];
    return lower.is_number() && lower.get<double>() > static_cast<const VX_Variable&>(target).Upper();
}

void ApplyToValue(VX_VarParam& target, const Json& value, const std::string& pointer, const std::string& name) {
    if (!value.is_object()) {
        if (auto why = Assign(target, VX_ATTR_VALUE, value)) Refused(pointer, name, "value", *why);
        return;
    }
    for (const auto& [key, v] : value.items())
        if (!IsAttributeKey(key))
            throw InputError(PointerChild(pointer, key), name + ": unknown attribute \"" + key + "\" (value, spec, lower, upper)");
    const bool upperFirst = UpperFirst(target, value);
    for (int pass = 0; pass < 4; ++pass) {
        int k = pass;
        if (upperFirst && (pass == 1 || pass == 2)) k = 3 - pass;
        const AttributeName& a = kAttributes[k];
        if (!value.contains(a.key)) continue;
        if (auto why = Assign(target, a.attr, value[a.key])) Refused(PointerChild(pointer, a.key), name, a.key, *why);
    }
}

std::string ElementName(const std::string& arrayName, const VX_Matrix& array, int k) {
    return arrayName + "(" + array.IndexText(k) + ")";
}

void CheckLength(const VX_Matrix& array, const Json& list, const std::string& pointer, const std::string& name) {
    if (static_cast<int>(list.size()) != array.Size())
        throw InputError(pointer, name + " has " + std::to_string(array.Size()) + " elements, the list gives " +
                                      std::to_string(list.size()));
}

void ApplyToArray(VX_Matrix& array, const Json& value, const std::string& pointer, const std::string& name) {
    if (value.is_array()) {
        CheckLength(array, value, pointer, name);
        for (int k = 0; k < array.Size(); ++k)
            if (VX_Type* e = array.At(k)) ApplyValue(*e, value[static_cast<std::size_t>(k)], PointerChild(pointer, static_cast<std::size_t>(k)), ElementName(name, array, k));
        return;
    }
    if (!value.is_object())
        throw InputError(pointer, name + " is an array: give a list in set order, an object keyed by index or "
                                         "{\"value\": ...} for every element, not " + JsonBrief(value));
    if (!IsAttributeObject(value)) {
        // Keyed by index.
        for (const auto& [index, v] : value.items()) {
            const std::string at = PointerChild(pointer, index);
            const std::string path = array.Path() + "(" + index + ")";
            VX_Type* top = &array;
            while (top->Owner()) top = top->Owner();
            auto found = zorexp_cli::ResolvePath(*top, path);
            if (!found.object) throw InputError(at, name + ": " + found.problem);
            ApplyValue(*found.object, v, at, name + "(" + index + ")");
        }
        return;
    }
    // Attributes for every element: one value for all, or a list in set order.
    for (const AttributeName& a : kAttributes) {
        if (!value.contains(a.key)) continue;
        const Json& v = value[a.key];
        const std::string at = PointerChild(pointer, a.key);
        // One value for every element is converted once; a list item by item.
        std::optional<VX_Value> every;
        if (v.is_array()) {
            CheckLength(array, v, at, name);
        } else {
            std::string why;
            every = Convert(a.attr, v, why);
            if (!every) Refused(at, name, a.key, why);
        }
        for (int k = 0; k < array.Size(); ++k) {
            VX_Type* e = array.At(k);
            if (!e) continue;
            if (!e->IsValue()) throw InputError(at, ElementName(name, array, k) + " is not a variable or parameter: it has no " + a.key);
            auto& target = static_cast<VX_VarParam&>(*e);
            auto why = every ? Assign(target, a.attr, *every) : Assign(target, a.attr, v[static_cast<std::size_t>(k)]);
            if (why) Refused(every ? at : PointerChild(at, static_cast<std::size_t>(k)), ElementName(name, array, k), a.key, *why);
        }
    }
}

void ApplyToContainer(VX_Type& container, const Json& value, const std::string& pointer, const std::string& name) {
    if (!value.is_object())
        throw InputError(pointer, name + " holds properties: give an object of their paths and values, not " + JsonBrief(value));
    for (const auto& [path, v] : value.items()) {
        const std::string at = PointerChild(pointer, path);
        auto found = zorexp_cli::ResolvePath(container, path);
        if (!found.object) throw InputError(at, name + ": " + found.problem);
        ApplyValue(*found.object, v, at, name + "." + path);
    }
}

}  // namespace

void ApplyValue(VX_Type& target, const Json& value, const std::string& pointer, const std::string& name) {
    if (target.IsValue()) return ApplyToValue(static_cast<VX_VarParam&>(target), value, pointer, name);
    if (auto* array = dynamic_cast<VX_Matrix*>(&target)) return ApplyToArray(*array, value, pointer, name);
    if (dynamic_cast<VX_Container*>(&target)) return ApplyToContainer(target, value, pointer, name);
    throw InputError(pointer, name + " cannot be set (it is a reference that is not linked)");
}

}  // namespace zx::flowsheet
