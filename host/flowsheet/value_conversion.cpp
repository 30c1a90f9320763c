#include "flowsheet/value_conversion.hpp"

#include <memory>
#include <vector>

#include "zorexp/sets.hpp"
#include "zorexp/units.hpp"

namespace zx::flowsheet {
namespace {

constexpr const char* kIntegerRange = "outside the range of integers (-2147483648 to 2147483647)";

std::optional<VX_Value> Refuse(ConversionRefusal& refusal, std::string why, SourcePos pos) {
    refusal.why = std::move(why);
    refusal.pos = pos;
    return std::nullopt;
}

bool WantsInteger(const VX_VarParam& target) {
    return target.GetKind() == VX_VarParam::IntegerParameter || target.GetKind() == VX_VarParam::LogicalParameter ||
           target.GetKind() == VX_VarParam::IntegerSet;
}

// A list as a set: all integers (of 32 bits) or all texts.
std::optional<VX_Value> SetValue(const VX_VarParam& target, const InputValue& list, ConversionRefusal& refusal) {
    const bool texts = list.Size() > 0 ? list.Items().size() > 0 && list.Items()[0].GetKind() == InputValue::Kind::Text
                                       : target.GetKind() != VX_VarParam::IntegerSet;
    auto integers = std::make_shared<VX_IntSetData>();
    std::vector<std::string> members;
    const bool complete = list.ForEachItem([&](const InputValue& item, std::size_t k) {
        const std::string which = " (item " + std::to_string(k) + ")";
        if (texts != (item.GetKind() == InputValue::Kind::Text)) {
            Refuse(refusal, "a list must hold only integers or only texts, got " + list.Brief(), item.Pos());
            return false;
        }
        if (texts) {
            members.push_back(item.Text());
        } else if (item.IsInt32()) {
            integers->Add(static_cast<int>(item.Number()));
        } else {
            Refuse(refusal, item.GetKind() == InputValue::Kind::Integer
                                ? "set member " + item.Brief() + which + " is " + kIntegerRange
                                : std::string("a set of integers holds integers only, got ") + item.KindText() + " " + item.Brief() + which,
                   item.Pos());
            return false;
        }
        return true;
    });
    if (!complete) return std::nullopt;
    if (texts) return VX_Value(VX_StrSetValue(std::move(members)), 0);
    return VX_Value(VX_IntSetValue(std::shared_ptr<const VX_IntSetData>(std::move(integers))), 0);
}

bool TakesUnit(const VX_VarParam& target, VX_Attr attr) {
    return (target.GetKind() == VX_VarParam::RealVariable || target.GetKind() == VX_VarParam::RealParameter) &&
           (attr == VX_ATTR_VALUE || attr == VX_ATTR_LOWER || attr == VX_ATTR_UPPER);
}

// A number with a unit (from a text "300 K" or the attribute object's "unit") in the base unit
// of target's type.
std::optional<VX_Value> InBaseUnit(const VX_VarParam& target, double number, std::string_view unit, const InputValue& value,
                                   ConversionRefusal& refusal) {
    std::string problem;
    const std::optional<vx_units::Conversion> c = vx_units::ToBase(vx_units::MeasureOf(target), unit, &problem);
    if (!c) {
        const std::string given = value.GetKind() == InputValue::Kind::Text ? value.Brief() : value.Brief() + " " + std::string(unit);
        return Refuse(refusal, given + ": " + problem, value.Pos());
    }
    return VX_Value(c->Apply(number), 0);
}

}  // namespace

std::optional<VX_Value> RuntimeValue(const VX_VarParam& target, VX_Attr attr, const InputValue& value,
                                     ConversionRefusal& refusal, std::string_view unit) {
    if (!unit.empty() && attr != VX_ATTR_SPEC && !TakesUnit(target, attr))
        return Refuse(refusal, value.Brief() + " " + std::string(unit) + ": a unit is given, but this value takes none", value.Pos());
    if (TakesUnit(target, attr)) {
        double number = 0.0;
        std::string_view written;
        if (value.IsNumber() && !unit.empty()) return InBaseUnit(target, value.Number(), unit, value, refusal);
        if (value.GetKind() == InputValue::Kind::Text && vx_units::SplitQuantity(value.Text(), number, written)) {
            if (!written.empty() && !unit.empty() && written != unit)
                return Refuse(refusal, value.Brief() + " is in " + std::string(written) + ", but \"unit\" says " + std::string(unit),
                              value.Pos());
            return InBaseUnit(target, number, written.empty() ? unit : written, value, refusal);
        }
    }
    if (attr == VX_ATTR_SPEC) {
        const std::int32_t code = value.GetKind() == InputValue::Kind::Text ? VX_SpecFromText(value.Text().c_str()) : 0;
        if (code == 0) return Refuse(refusal, "expects a spec (Fixed, Free, Initial, RateInitial), got " + value.Brief(), value.Pos());
        return VX_Value(static_cast<VX_SpecType>(code), VX_CTX_USER, 0, 0);
    }
    switch (value.GetKind()) {
    case InputValue::Kind::Integer:
        if (value.IsInt32()) return VX_Value(static_cast<int>(value.Number()), 0);
        if (WantsInteger(target)) return Refuse(refusal, "integer " + value.Brief() + " is " + kIntegerRange, value.Pos());
        return VX_Value(value.Number(), 0);
    case InputValue::Kind::Real: return VX_Value(value.Number(), 0);
    case InputValue::Kind::Logical: return VX_Value(value.Logical(), 0);
    case InputValue::Kind::Text: return VX_Value(value.Text().c_str(), 0);
    case InputValue::Kind::List: return SetValue(target, value, refusal);
    case InputValue::Kind::Null:
    case InputValue::Kind::Object: break;
    }
    return Refuse(refusal, value.Brief() + " is not a value", value.Pos());
}

}  // namespace zx::flowsheet
