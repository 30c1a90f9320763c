#include "thermo/ideal_gas_state.hpp"

#include "thermo/units.hpp"

namespace zx::thermo {

IdealGasState PureIdealGas(const Component& c, double T) {
    const HeatCapacityValues cp = c.ideal_gas_cp->At(T);
    IdealGasState g;
    g.h = *c.formation_enthalpy + cp.h;
    if (c.formation_gibbs_energy) g.s = (*c.formation_enthalpy - *c.formation_gibbs_energy) / kReferenceTemperature + cp.s;
    g.cp = cp.cp;
    g.dcp = cp.dcp_dT;
    g.outside = cp.outside;
    return g;
}

}  // namespace zx::thermo
