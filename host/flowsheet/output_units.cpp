#include "flowsheet/output_units.hpp"

#include "flowsheet/input_error.hpp"
#include "zorexp/parameters.hpp"
#include "zorexp/text.hpp"
#include "zorexp/variable.hpp"

namespace zx::flowsheet {
namespace {

std::string_view Trim(std::string_view s) {
    while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
    while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
    return s;
}

[[noreturn]] void Refuse(std::string_view item, const std::string& why) {
    throw InputError(std::string(), "--units " + VX_BriefText(item) + ": " + why);
}

template <class Type>
std::pair<const void*, const void*> Identity(const Type& t) {
    return {t.VX_DefaultPHYSICALQUANTITY(), t.VX_DefaultBASEUOMNAME()};
}

}  // namespace

OutputUnits OutputUnits::Parse(std::string_view text) {
    OutputUnits units;
    if (Trim(text).empty()) Refuse(text, "give SI, field or QUANTITY=UNIT (zorexp units lists them)");
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        const std::string_view item = Trim(text.substr(start, comma - start));
        start = comma + 1;
        if (item.empty()) Refuse(text, "an item between commas is empty");
        const std::string itemText(item);
        const std::size_t eq = item.find('=');
        if (eq == std::string_view::npos) {
            if (VX_EqualCI(itemText.c_str(), "SI")) units.m_system = System::SI;
            else if (VX_EqualCI(itemText.c_str(), "field")) units.m_system = System::Field;
            else Refuse(item, "expected SI, field or QUANTITY=UNIT, such as Temperature=C");
            continue;
        }
        const std::string_view name = Trim(item.substr(0, eq)), unit = Trim(item.substr(eq + 1));
        const vx_units::Family* family = nullptr;
        for (const vx_units::Family& f : vx_units::Families())
            if (VX_EqualCI(std::string(name).c_str(), f.name)) family = &f;
        if (!family) Refuse(item, "unknown quantity \"" + VX_BriefText(name) + "\" (zorexp units lists the quantities)");
        const vx_units::UnitDef* accepted = vx_units::FindUnit(*family, unit);
        if (!accepted)
            Refuse(item, "unit \"" + VX_BriefText(unit) + "\" does not fit " + family->name + " (it accepts " +
                             vx_units::AcceptedUnitsText(*family) + ")");
        units.m_quantities.push_back({family, accepted->text});
    }
    return units;
}

const char* OutputUnits::Chosen(const vx_units::Measure& m) const {
    if (!m.family) return nullptr;
    for (auto it = m_quantities.rbegin(); it != m_quantities.rend(); ++it)
        if (it->family == m.family) return it->unit;
    const char* system = m_system == System::SI ? m.family->si : m_system == System::Field ? m.family->field : "";
    return *system ? system : nullptr;
}

OutputUnits::Choice OutputUnits::For(const VX_VarParam& target) {
    const auto [quantity, baseUnit] = target.GetKind() == VX_VarParam::RealParameter
                                          ? Identity(static_cast<const VX_REALPARAMETER&>(target))
                                          : Identity(static_cast<const VX_Variable&>(target));
    for (const Known& k : m_known)
        if (k.quantity == quantity && k.baseUnit == baseUnit) return k.choice;
    const vx_units::Measure m = vx_units::MeasureOf(target);
    Choice choice;
    choice.unit = baseUnit ? std::string_view(static_cast<const VX_Value*>(baseUnit)->TextValue()) : std::string_view();
    if (const char* unit = Chosen(m)) {
        choice.toBase = *vx_units::ToBase(m, unit, nullptr);
        choice.unit = unit;
    }
    m_known.push_back({quantity, baseUnit, choice});
    return choice;
}

}  // namespace zx::flowsheet
