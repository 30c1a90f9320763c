#include "thermo/ideal_gas_heat_capacity.hpp"

#include <cmath>

#include "thermo/units.hpp"

namespace zx::thermo {
namespace {

struct Formula {
    const IdealGasHeatCapacity& c;
    double CpR(double T) const { return c.A + c.B * T + c.C * T * T + c.D / (T * T); }
    double Slope(double T) const { return c.B + 2.0 * c.C * T - 2.0 * c.D / (T * T * T); }
    // Integrals of cp/R and cp/(R T) from T0 to T.
    double H(double T0, double T) const {
        return c.A * (T - T0) + c.B / 2.0 * (T * T - T0 * T0) + c.C / 3.0 * (T * T * T - T0 * T0 * T0) - c.D * (1.0 / T - 1.0 / T0);
    }
    double S(double T0, double T) const {
        return c.A * std::log(T / T0) + c.B * (T - T0) + c.C / 2.0 * (T * T - T0 * T0) - c.D / 2.0 * (1.0 / (T * T) - 1.0 / (T0 * T0));
    }
};

// cp/R = c0 + c1 (T - Tl) beyond a limit Tl: integrals from Tl to T.
double LinearH(double c0, double c1, double Tl, double T) { return c0 * (T - Tl) + c1 / 2.0 * (T - Tl) * (T - Tl); }
double LinearS(double c0, double c1, double Tl, double T) { return (c0 - c1 * Tl) * std::log(T / Tl) + c1 * (T - Tl); }

}  // namespace

HeatCapacityValues IdealGasHeatCapacity::At(double T) const {
    const Formula f{*this};
    const double T0 = kReferenceTemperature;
    const double R = kGasConstant;
    HeatCapacityValues v;
    if (T >= t_min && T <= t_max) {
        v.cp = R * f.CpR(T);
        v.dcp_dT = R * f.Slope(T);
        v.h = R * f.H(T0, T);
        v.s = R * f.S(T0, T);
        return v;
    }
    v.outside = true;
    const double Tl = T < t_min ? t_min : t_max;
    const double c0 = f.CpR(Tl), c1 = f.Slope(Tl);
    v.cp = R * (c0 + c1 * (T - Tl));
    v.dcp_dT = R * c1;
    v.h = R * (f.H(T0, Tl) + LinearH(c0, c1, Tl, T));
    v.s = R * (f.S(T0, Tl) + LinearS(c0, c1, Tl, T));
    return v;
}

}  // namespace zx::thermo
