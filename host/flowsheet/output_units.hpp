#pragma once
// The units results are printed in, as `--units` chooses them: a system ("SI", "field") and
// units per quantity ("Temperature=C"), separated by commas; later items win, and a quantity's
// own unit wins over the system. Quantities are the families `zorexp units` lists (a type's
// AbsoluteTemperature is a Temperature). Values of quantities nothing chooses stay in their
// base unit.
#include <string>
#include <string_view>
#include <vector>

#include "zorexp/units.hpp"

class VX_VarParam;

namespace zx::flowsheet {

class OutputUnits {
public:
    // Throws InputError naming the item, and for a unit that does not fit its quantity the
    // units it accepts.
    static OutputUnits Parse(std::string_view text);

    struct Choice {
        vx_units::Conversion toBase;   // from the printed unit to the base unit
        std::string_view unit;         // the printed unit
    };
    // The unit a variable or parameter is printed in. Types are few and variables many: the
    // answer is kept per type.
    Choice For(const VX_VarParam& target);

private:
    enum class System { None, SI, Field };
    const char* Chosen(const vx_units::Measure& m) const;

    System m_system = System::None;
    struct PerQuantity {
        const vx_units::Family* family;
        const char* unit;
    };
    std::vector<PerQuantity> m_quantities;
    struct Known {
        const void* quantity;   // the type's quantity and base-unit values: one pair per type
        const void* baseUnit;
        Choice choice;
    };
    std::vector<Known> m_known;
};

}  // namespace zx::flowsheet
