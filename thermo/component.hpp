#pragma once
// One pure component of the database: its constants in SI units, its correlations, and the
// listing of every value as the database gives it (value, unit, source) for users to inspect.
// A value the database does not give is absent; what needs it refuses the component.
#include <optional>
#include <string>
#include <vector>

#include "thermo/ideal_gas_heat_capacity.hpp"
#include "thermo/saturated_liquid.hpp"
#include "thermo/vapour_pressure.hpp"

namespace zx::thermo {

// One value as written in the database file, for listings.
struct ComponentDatum {
    std::string quantity;  // e.g. "critical_temperature"
    std::string value;     // e.g. "647.1" or the correlation's constants
    std::string unit;      // e.g. "K"
    std::string source;    // the full source text
};

struct Component {
    std::string id, name, formula;
    std::vector<std::string> aliases;

    double molecular_weight = 0.0;  // kg/kmol
    std::optional<double> critical_temperature;      // K
    std::optional<double> critical_pressure;         // Pa
    std::optional<double> critical_volume;           // m3/mol
    std::optional<double> critical_compressibility;  // -
    std::optional<double> acentric_factor;           // -
    std::optional<double> normal_boiling_point;      // K
    std::optional<double> formation_enthalpy;        // J/mol, ideal gas at 298.15 K
    std::optional<double> formation_gibbs_energy;    // J/mol, ideal gas at 298.15 K and 1 bar
    std::optional<double> heat_of_vaporisation_nb;   // J/mol at the normal boiling point
    std::optional<IdealGasHeatCapacity> ideal_gas_cp;
    std::optional<VapourPressure> vapour_pressure;
    std::optional<RackettVolume> liquid_volume;
    std::optional<WatsonHeatOfVaporisation> heat_of_vaporisation;

    std::vector<ComponentDatum> data;  // every value with unit and source, in file order
};

}  // namespace zx::thermo
