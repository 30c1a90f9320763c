#include "zorexp/units.hpp"

#include <cctype>
#include <charconv>
#include <cmath>
#include <iterator>

#include "zorexp/parameters.hpp"
#include "zorexp/units_table.hpp"
#include "zorexp/variable.hpp"

namespace vx_units {
namespace {

constexpr Family kFamilies[] = {
#define VX_QUANTITY(NAME, UNITS_OF, SI, FIELD) {#NAME, #UNITS_OF, SI, FIELD},
#define VX_CONVERSION(FAMILY, TEXT, FACTOR, OFFSET, SOURCE)
#include "zorexp/unit_conversions.def"
#undef VX_CONVERSION
#undef VX_QUANTITY
};

constexpr UnitDef kUnits[] = {
#define VX_QUANTITY(NAME, UNITS_OF, SI, FIELD)
#define VX_CONVERSION(FAMILY, TEXT, FACTOR, OFFSET, SOURCE) {#FAMILY, TEXT, FACTOR, OFFSET, SOURCE},
#include "zorexp/unit_conversions.def"
#undef VX_CONVERSION
#undef VX_QUANTITY
};

struct TableRow {
    const char* unit;
    const char* quantity;
};
constexpr TableRow kTableRows[] = {
#define VX_UNIT(ROW, COL, UNIT, QUANTITY) {UNIT, QUANTITY},
#include "zorexp/units_table.def"
#undef VX_UNIT
};

constexpr const Family* Find(std::string_view name) {
    for (const Family& f : kFamilies)
        if (name == f.name) return &f;
    return nullptr;
}

constexpr const UnitDef* FindUnit(std::string_view family, std::string_view text) {
    for (const UnitDef& u : kUnits)
        if (family == u.family && text == u.text) return &u;
    return nullptr;
}

// The table's own consistency, checked when it is compiled: every family takes the units of
// a family that lists its reference unit first; SI and field units are units it accepts; a
// unit is listed once per family; every unit of the units table is a unit of its row's family.
constexpr bool FamiliesAreWhole() {
    for (const Family& f : kFamilies) {
        const Family* of = Find(f.unitsOf);
        if (!of || std::string_view(of->unitsOf) != of->name) return false;
        for (const char* chosen : {f.si, f.field})
            if (*chosen && !FindUnit(f.unitsOf, chosen)) return false;
        const UnitDef* first = nullptr;
        for (const UnitDef& u : kUnits)
            if (!first && f.unitsOf == std::string_view(u.family)) first = &u;
        if (!first || first->factor != 1.0 || first->offset != 0.0) return false;
    }
    for (const UnitDef& u : kUnits) {
        if (!Find(u.family) || FindUnit(u.family, u.text) != &u || !(u.factor > 0.0)) return false;
    }
    return true;
}
static_assert(FamiliesAreWhole(), "unit_conversions.def: a family, its reference unit, or a unit is missing or repeated");

constexpr bool CoversUnitsTable() {
    for (const TableRow& r : kTableRows) {
        const Family* f = Find(r.quantity);
        if (!f) return false;
        if (*r.unit && !FindUnit(f->unitsOf, r.unit)) return false;
    }
    return true;
}
static_assert(CoversUnitsTable(), "unit_conversions.def: every family and unit of units_table.def must be listed");

std::string Quote(std::string_view text) { return "\"" + std::string(text) + "\""; }

template <class Type>
Measure MeasureOfType(const Type& t) {
    const VX_Value* quantity = t.VX_DefaultPHYSICALQUANTITY();
    const VX_Value* unit = t.VX_DefaultBASEUOMNAME();
    return MeasureOf(t.VX_PQRow(), t.VX_PQCol(), quantity ? quantity->TextValue() : "", unit ? unit->TextValue() : "");
}

}  // namespace

std::span<const Family> Families() { return kFamilies; }
std::span<const UnitDef> Units() { return kUnits; }
const Family* FindFamily(std::string_view name) { return Find(name); }
const UnitDef* FindUnit(const Family& family, std::string_view text) { return FindUnit(family.unitsOf, text); }

std::string AcceptedUnitsText(const Family& family) {
    std::string text;
    for (const UnitDef& u : kUnits)
        if (std::string_view(u.family) == family.unitsOf) text += (text.empty() ? "" : ", ") + std::string(u.text);
    return text;
}

std::string Measure::Name() const {
    if (!quantity.empty()) return quantity;
    return family ? family->name : "a value without a quantity";
}

Measure MeasureOf(int row, int col, std::string_view quantity, std::string_view baseUnit) {
    Measure m;
    m.quantity = quantity;
    m.baseUnit = baseUnit;
    if (baseUnit.empty()) return m;
    // The units-table row names the family (a HeatFlowSmall is a HeatFlow); without a
    // position, the quantity name does.
    const VX_UnitEntry* entry = (row != 0 || col != 0) ? VX_FindUnit(row, col) : nullptr;
    const Family* family = Find(entry ? std::string_view(entry->quantity) : quantity);
    if (!family) return m;
    if (const UnitDef* base = FindUnit(family->unitsOf, baseUnit)) {
        m.family = family;
        m.base = base;
    }
    return m;
}

Measure MeasureOf(const VX_VarParam& target) {
    if (target.GetKind() == VX_VarParam::RealVariable) return MeasureOfType(static_cast<const VX_Variable&>(target));
    if (target.GetKind() == VX_VarParam::RealParameter) return MeasureOfType(static_cast<const VX_REALPARAMETER&>(target));
    return {};
}

std::vector<std::string_view> AcceptedUnits(const Measure& m) {
    std::vector<std::string_view> units;
    if (!m.family) {
        if (m.HasUnit()) units.push_back(m.baseUnit);
        return units;
    }
    for (const UnitDef& u : kUnits)
        if (std::string_view(u.family) == m.family->unitsOf) units.push_back(u.text);
    return units;
}

std::string AcceptedUnitsText(const Measure& m) {
    if (m.family) return AcceptedUnitsText(*m.family);
    return m.HasUnit() ? m.baseUnit : "no unit";
}

std::optional<Conversion> ToBase(const Measure& m, std::string_view unit, std::string* problem) {
    if (unit.empty() || unit == m.baseUnit) return Conversion{};
    const UnitDef* u = m.family ? FindUnit(m.family->unitsOf, unit) : nullptr;
    if (!u) {
        if (problem) {
            *problem = "unit " + Quote(unit) + " does not fit " + m.Name();
            *problem += m.HasUnit() ? " (it accepts " + AcceptedUnitsText(m) + ")" : " (it takes no unit)";
        }
        return std::nullopt;
    }
    // Through the reference unit: v * u.factor + u.offset = b * base.factor + base.offset.
    return Conversion{u->factor, u->offset - m.base->offset, m.base->factor};
}

double ToBase(const Measure& m, double value, std::string_view unit) {
    std::string problem;
    const std::optional<Conversion> c = ToBase(m, unit, &problem);
    if (!c) throw UnitError(problem);
    return c->Apply(value);
}

double FromBase(const Measure& m, double value, std::string_view unit) {
    std::string problem;
    const std::optional<Conversion> c = ToBase(m, unit, &problem);
    if (!c) throw UnitError(problem);
    return c->Undo(value);
}

bool SplitQuantity(std::string_view text, double& value, std::string_view& unit) {
    auto blank = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    // from_chars reads no leading '+'; a sign after it is not a number.
    if (text.size() > 1 && text.front() == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc() || end == text.data() || !std::isfinite(value)) return false;   // "inf K" is no quantity
    unit = text.substr(static_cast<std::size_t>(end - text.data()));
    while (!unit.empty() && blank(unit.front())) unit.remove_prefix(1);
    return true;
}

}  // namespace vx_units
