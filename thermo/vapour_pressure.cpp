#include "thermo/vapour_pressure.hpp"

#include <cmath>

#include "thermo/units.hpp"

namespace zx::thermo {
namespace {

VapourPressureValues Antoine(const VapourPressure& c, double T) {
    const double u = T - kCelsiusOffset + c.C;
    return {std::log(1000.0) + c.A - c.B / u, c.B / (u * u), -2.0 * c.B / (u * u * u), false};
}

VapourPressureValues LeeKesler(const VapourPressure& c, double T) {
    const double tr = T / c.tc, tr5 = std::pow(tr, 5), tr6 = tr5 * tr;
    const double f0 = 5.92714 - 6.09648 / tr - 1.28862 * std::log(tr) + 0.169347 * tr6;
    const double f1 = 15.2518 - 15.6875 / tr - 13.4721 * std::log(tr) + 0.43577 * tr6;
    const double d0 = 6.09648 / (tr * tr) - 1.28862 / tr + 6.0 * 0.169347 * tr5;
    const double d1 = 15.6875 / (tr * tr) - 13.4721 / tr + 6.0 * 0.43577 * tr5;
    const double dd0 = -2.0 * 6.09648 / (tr * tr * tr) + 1.28862 / (tr * tr) + 30.0 * 0.169347 * tr5 / tr;
    const double dd1 = -2.0 * 15.6875 / (tr * tr * tr) + 13.4721 / (tr * tr) + 30.0 * 0.43577 * tr5 / tr;
    return {std::log(c.pc) + f0 + c.omega * f1, (d0 + c.omega * d1) / c.tc, (dd0 + c.omega * dd1) / (c.tc * c.tc), false};
}

// ln P linear in 1/T from a limit Tl where the correlation gives `at`.
VapourPressureValues ClausiusClapeyron(const VapourPressureValues& at, double Tl, double T) {
    const double slope = -Tl * Tl * at.dln_p;  // d ln P / d(1/T)
    return {at.ln_p + slope * (1.0 / T - 1.0 / Tl), -slope / (T * T), 2.0 * slope / (T * T * T), true};
}

}  // namespace

VapourPressureValues VapourPressure::At(double T) const {
    if (form == Form::Antoine) {
        if (T < t_min) return ClausiusClapeyron(Antoine(*this, t_min), t_min, T);
        VapourPressureValues v = Antoine(*this, T);
        v.outside = T > t_max;
        return v;
    }
    if (T > tc) return ClausiusClapeyron(LeeKesler(*this, tc), tc, T);
    VapourPressureValues v = LeeKesler(*this, T);
    v.outside = T < t_min || T > t_max;
    return v;
}

}  // namespace zx::thermo
