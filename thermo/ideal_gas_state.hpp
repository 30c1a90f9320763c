#pragma once
// A pure component as an ideal gas at T, on the reference state of the whole package: enthalpy
// relative to the elements at 298.15 K (h = dHf + integral of cp), entropy relative to the
// elements (s = (dHf - dGf)/298.15 K + integral of cp/T) at 1 bar, so that g = h - T s equals
// dGf at 298.15 K and sums over a reaction give its standard enthalpy and Gibbs energy.
#include "thermo/component.hpp"

namespace zx::thermo {

struct IdealGasState {
    double h = 0.0;    // J/mol
    double s = 0.0;    // J/(mol K), at 1 bar; 0 when the database lacks dGf
    double cp = 0.0;   // J/(mol K)
    double dcp = 0.0;  // J/(mol K2)
    bool outside = false;
};

// Needs the component's ideal-gas heat capacity and formation enthalpy (the caller checks).
IdealGasState PureIdealGas(const Component& c, double T);

}  // namespace zx::thermo
