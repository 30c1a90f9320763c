#pragma once
// Units of measure for values of real variables and parameters: a value written in any unit
// of its quantity is converted to the base unit its type holds it in, and back. What a type
// measures comes from its units-table position (the row's quantity family) or, for types
// without one, from its quantity name; the units each family accepts are data in
// unit_conversions.def.
//
// A type whose quantity has no family here (or no quantity at all) accepts only its own base
// unit, or no unit when it has none.
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class VX_VarParam;

namespace vx_units {

struct Family {
    const char* name;       // "Temperature"
    const char* unitsOf;    // the family whose units it accepts (often itself)
    const char* si;         // unit for --units SI ("" keeps the base unit)
    const char* field;      // unit for --units field ("" keeps the base unit)
};

struct UnitDef {
    const char* family;     // the family it belongs to (a unitsOf family)
    const char* text;       // as users write it: "kmol/hr", "°C"
    double factor;          // v in this unit is v * factor + offset in the family's reference unit
    double offset;
    const char* source;     // where the factor comes from
};

std::span<const Family> Families();
std::span<const UnitDef> Units();
const Family* FindFamily(std::string_view name);
// The unit a family accepts under that text, or null.
const UnitDef* FindUnit(const Family& family, std::string_view text);
// "K, C, °C, ...": the units a family accepts, in table order.
std::string AcceptedUnitsText(const Family& family);

// A value in one unit as a value in another: to = (from * factor + offset) / divisor. Going
// through the reference unit in two steps keeps conversions such as 350 W to 0.35 kW exact to
// the last digit (multiplying by 0.001 would not).
struct Conversion {
    double factor = 1.0;
    double offset = 0.0;
    double divisor = 1.0;
    double Apply(double v) const { return (v * factor + offset) / divisor; }
    double Undo(double v) const { return (v * divisor - offset) / factor; }
};

// What the values of a type measure.
struct Measure {
    std::string quantity;             // the type's own quantity name ("AbsoluteTemperature"), "" when none
    std::string baseUnit;             // the unit values are held in ("K"), "" when none
    const Family* family = nullptr;   // null: only baseUnit (or, when "", no unit) is accepted
    const UnitDef* base = nullptr;    // baseUnit's entry in the family

    // The quantity as messages name it: the type's quantity, or its family when it has none.
    std::string Name() const;
    bool HasUnit() const { return !baseUnit.empty(); }
};

// From a type's units-table position and its quantity and base-unit texts.
Measure MeasureOf(int row, int col, std::string_view quantity, std::string_view baseUnit);
// For a real variable or real parameter; anything else measures nothing (accepts no unit).
Measure MeasureOf(const VX_VarParam& target);

// The units a measure accepts, in table order ("K", "C", "°C", ...).
std::vector<std::string_view> AcceptedUnits(const Measure& m);
// "K, C, °C, ..." or "no unit".
std::string AcceptedUnitsText(const Measure& m);

// Converts values written in unit to the measure's base unit. An empty unit is the base unit.
// Nothing, with *problem set, when the unit does not fit: "unit \"psi\" does not fit
// AbsoluteTemperature (it accepts K, C, ...)".
std::optional<Conversion> ToBase(const Measure& m, std::string_view unit, std::string* problem);

class UnitError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};
// One value to and from the base unit; throw UnitError when the unit does not fit.
double ToBase(const Measure& m, double value, std::string_view unit);
double FromBase(const Measure& m, double value, std::string_view unit);

// "300 K", "-12.5e1 °C", "7": the number and the unit after it (blanks around it trimmed,
// possibly empty). False when the text does not start with a finite number.
bool SplitQuantity(std::string_view text, double& value, std::string_view& unit);

}  // namespace vx_units
