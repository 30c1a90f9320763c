#include "thermo/saturated_liquid.hpp"

#include <cmath>

#include "thermo/units.hpp"

namespace zx::thermo {

CorrelationValues RackettVolume::At(double T) const {
    const double lnz = std::log(zc);
    const double base = std::log(kGasConstant * tc / pc) + lnz;
    // ln V = base + lnz tau^(2/7), tau = 1 - T/Tc
    auto lnv = [&](double t) {
        const double tau = 1.0 - t / tc;
        const double e = std::pow(tau, 2.0 / 7.0);
        const double de = -(2.0 / 7.0) * e / tau / tc;
        const double dde = -(2.0 / 7.0) * (5.0 / 7.0) * e / (tau * tau) / (tc * tc);
        return CorrelationValues{base + lnz * e, lnz * de, lnz * dde, false};
    };
    CorrelationValues l;
    const double tl = kSmoothLimitTr * tc;
    if (T <= tl) {
        l = lnv(T);
    } else {
        const CorrelationValues at = lnv(tl);
        l = {at.value + at.d1 * (T - tl), at.d1, 0.0, true};
    }
    const double v = std::exp(l.value);
    return {v, v * l.d1, v * (l.d2 + l.d1 * l.d1), l.outside};
}

CorrelationValues WatsonHeatOfVaporisation::At(double T) const {
    const double span = tc - tb;
    auto watson = [&](double t) {
        const double r = (tc - t) / span;
        const double v = dh_nb * std::pow(r, 0.38);
        const double d1 = -0.38 * v / (r * span);
        const double d2 = 0.38 * (0.38 - 1.0) * v / (r * r * span * span);
        return CorrelationValues{v, d1, d2, false};
    };
    const double tl = kSmoothLimitTr * tc;
    if (T <= tl) return watson(T);
    const CorrelationValues at = watson(tl);
    const double v = at.value + at.d1 * (T - tl);
    if (v <= 0.0) return {0.0, 0.0, 0.0, true};
    return {v, at.d1, 0.0, true};
}

}  // namespace zx::thermo
