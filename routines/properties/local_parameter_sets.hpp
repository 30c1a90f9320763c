#pragma once
// Parameter sets of the local property models: fitted by PLIQUID_PAR / PVAPOR_PAR at one state
// from the rigorous method, and named by the number those routines return. The local forms are
//   enthalpy      h(T[, P], x) = sum_i x_i (hbar_i + cbar_i (T - T*)) [+ dh/dP* (P - P*)]
//                 with hbar_i, cbar_i the partial molar enthalpy and heat capacity at the fit;
//   mass density  rho(T) = rho* exp(beta (T - T*)), beta = d ln rho / dT at the fit (liquid);
//   molar density rho(T, P) = P / (Z* R T), Z* the compressibility at the fit (vapour);
//   molecular weight sum_i x_i M_i.
// A calling site (the runtime's argument buffer of one fitting call) owns one set: fitting again
// replaces its values and keeps its number, so the number does not change with the state and
// finite differences of the fitting call see a constant.
#include <cstddef>
#include <vector>

namespace zx::routines {

struct LocalParameters {
    double id = 0.0;
    const void* site = nullptr;
    bool liquid = true;
    double T = 0.0, P = 0.0;       // fit state, K and Pa
    std::vector<double> h, c, mw;  // J/mol, J/(mol K), kg/kmol per component
    double rho_mass = 0.0;         // kg/m3 (liquid)
    double beta = 0.0;             // 1/K (liquid)
    double z_factor = 1.0;         // - (vapour)
    double dh_dP = 0.0;            // J/(mol Pa) (vapour)
};

// The set of the fitting call at `site` for that phase, made on its first fit.
LocalParameters& LocalParametersAt(const void* site, bool liquid);
// The set named by `id`; RoutineError when no such set exists or it is of the other phase.
const LocalParameters& FindLocalParameters(double id, bool liquid);

}  // namespace zx::routines
