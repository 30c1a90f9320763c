#pragma once
// Ideal-gas heat capacity of one component, cp/R = A + B T + C T^2 + D / T^2 (T in K) inside its
// stated range, with the enthalpy and entropy integrals from the reference temperature. Outside
// the range cp is continued linearly from the nearer limit (value and slope), so enthalpy and
// entropy stay smooth; `outside` says when that happened.
namespace zx::thermo {

struct HeatCapacityValues {
    double cp = 0.0;       // J/(mol K)
    double dcp_dT = 0.0;   // J/(mol K^2)
    double h = 0.0;        // J/mol, integral of cp from the reference temperature
    double s = 0.0;        // J/(mol K), integral of cp/T from the reference temperature
    bool outside = false;  // T outside the correlation's range
};

struct IdealGasHeatCapacity {
    double A = 0.0, B = 0.0, C = 0.0, D = 0.0;  // of cp/R
    double t_min = 0.0, t_max = 0.0;            // K

    HeatCapacityValues At(double T) const;
};

}  // namespace zx::thermo
