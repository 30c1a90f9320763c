// Prints what the property package gives for water at the temperatures (C) named on the command
// line, one JSON object per line, for the IAPWS comparison script: saturation pressure (bar),
// saturated-liquid density (kg/m3), heat of vaporisation (kJ/kg) and ideal-gas cp (kJ/kg/K).
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "thermo/component_database.hpp"
#include "thermo/ideal_gas_state.hpp"
#include "thermo/units.hpp"

int main(int argc, char** argv) {
    using namespace zx::thermo;
    const ComponentDatabase db = ComponentDatabase::Load(DatabasePath(ZX_BUILD_PREFIX));
    const Component& water = db.Components()[db.Require("WATER")];
    const double kgPerMol = water.molecular_weight * 1e-3;
    for (int k = 1; k < argc; ++k) {
        const double t = std::atof(argv[k]), T = t + kCelsiusOffset;
        std::printf("{\"t\": %.6g, \"psat_bar\": %.10g, \"rho_liquid\": %.10g, \"dhvap\": %.10g, \"cp_ideal_gas\": %.10g}\n", t,
                    std::exp(water.vapour_pressure->At(T).ln_p) / kPascalPerBar, kgPerMol / water.liquid_volume->At(T).value,
                    water.heat_of_vaporisation->At(T).value / kgPerMol * 1e-3, PureIdealGas(water, T).cp / kgPerMol * 1e-3);
    }
}
