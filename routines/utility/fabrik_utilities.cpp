// Utility routines of the routine library "Fabrik", which the declarations also name "fabrik".
// docs/procedures.md tables what each computes; derivatives are returned where the declaration
// says so.
#include <cctype>
#include <cmath>
#include <string>

#include "routine_support.hpp"

namespace {

using zx::routine_support::Call;
using zx::routine_support::Number;

// PDIVIDE: y = a / b.
void Divide(Call& c) {
    const double a = c.In(0), b = c.In(1);
    if (b == 0.0) return c.Fail("division of " + Number(a) + " by zero");
    c.Out(0) = a / b;
    if (!c.WantsDerivatives()) return;
    c.Derivative(0, 0, 1.0 / b);
    c.Derivative(0, 1, -a / (b * b));
}

// The minimum of a and b with its slope ramped over a band of half-width w around a = b: outside
// the band exactly min(a, b); inside it (a + b)/2 - ((a - b)^2 + w^2) / (4 w), whose slope in a
// falls linearly from 1 to 0 across the band. da, db, dw are its partial derivatives.
struct SmoothMin {
    double value, da, db, dw;
};

SmoothMin RampedMinimum(double a, double b, double w) {
    const double u = a - b;
    if (w <= 0.0 || std::fabs(u) >= w) return u <= 0.0 ? SmoothMin{a, 1.0, 0.0, 0.0} : SmoothMin{b, 0.0, 1.0, 0.0};
    return {0.5 * (a + b) - (u * u + w * w) / (4.0 * w), 0.5 - u / (2.0 * w), 0.5 + u / (2.0 * w),
            -(w * w - u * u) / (4.0 * w * w)};
}

// PMINRAMP: the ramped minimum of a and b over the band half-width w.
void MinimumRamp(Call& c) {
    const double a = c.In(0), b = c.In(1), w = c.In(2);
    if (w < 0.0) return c.Fail("the band half-width " + Number(w) + " is negative");
    const SmoothMin m = RampedMinimum(a, b, w);
    c.Out(0) = m.value;
    if (!c.WantsDerivatives()) return;
    c.Derivative(0, 0, m.da);
    c.Derivative(0, 1, m.db);
    c.Derivative(0, 2, m.dw);
}

// PMINRAMPA: the ramped minimum of a and b over a band whose half-width has an absolute part and
// a part relative to b: w = w_abs + w_rel * |b|.
void MinimumRampAdaptive(Call& c) {
    const double a = c.In(0), b = c.In(1), wAbs = c.In(2), wRel = c.In(3);
    if (wAbs < 0.0 || wRel < 0.0) return c.Fail("the band widths " + Number(wAbs) + " and " + Number(wRel) + " must not be negative");
    const double w = wAbs + wRel * std::fabs(b);
    const SmoothMin m = RampedMinimum(a, b, w);
    c.Out(0) = m.value;
    if (!c.WantsDerivatives()) return;
    const double signB = b < 0.0 ? -1.0 : 1.0;
    c.Derivative(0, 0, m.da);
    c.Derivative(0, 1, m.db + m.dw * wRel * signB);
    c.Derivative(0, 2, m.dw);
    c.Derivative(0, 3, m.dw * std::fabs(b));
}

// PPOW: y = c * x^p. Where a derivative does not exist as a real number its entry is left
// non-finite (d/dx at x = 0 for 0 < p < 1, d/dp for x < 0): the runtime refuses it only when that
// input is a solver variable.
void Power(Call& call) {
    const double x = call.In(0), p = call.In(1), c = call.In(2);
    if (x < 0.0 && p != std::floor(p)) return call.Fail("a negative base " + Number(x) + " with the non-integral exponent " + Number(p));
    if (x == 0.0 && p < 0.0) return call.Fail("zero raised to the negative exponent " + Number(p));
    const double power = std::pow(x, p);
    call.Out(0) = c * power;
    if (!call.WantsDerivatives()) return;
    call.Derivative(0, 0, p == 0.0 ? 0.0 : x == 0.0 && p < 1.0 ? HUGE_VAL : c * p * std::pow(x, p - 1.0));
    call.Derivative(0, 1, x > 0.0 ? c * power * std::log(x) : x == 0.0 ? 0.0 : std::nan(""));
    call.Derivative(0, 2, power);
}

// PCOPY1: y = x.
void Copy(Call& c) { c.Out(0) = c.In(0); }

// PCOPYZ: y(i) = x(i).
void CopyVector(Call& c) {
    const int n = c.InputDim(0);
    if (c.OutputDim(0) != n) return c.Fail("x has " + std::to_string(n) + " elements, y " + std::to_string(c.OutputDim(0)));
    const double* x = c.InArray(0);
    double* y = c.OutArray(0);
    for (int i = 0; i < n; ++i) y[i] = x[i];
}

// PDBAND: a dead band from lo to hi: 0 inside it, slope_low * (x - lo) below, slope_high * (x - hi)
// above.
void DeadBand(Call& c) {
    const double x = c.In(0), lo = c.In(1), hi = c.In(2), slopeLow = c.In(3), slopeHigh = c.In(4);
    if (lo > hi) return c.Fail("the dead band's low end " + Number(lo) + " lies above its high end " + Number(hi));
    c.Out(0) = x < lo ? slopeLow * (x - lo) : x > hi ? slopeHigh * (x - hi) : 0.0;
}

// PGAUSS: the standard normal probability density, exp(-x^2 / 2) / sqrt(2 pi).
void Gauss(Call& c) {
    const double x = c.In(0);
    c.Out(0) = std::exp(-0.5 * x * x) / std::sqrt(2.0 * M_PI);
}

// PINT: x truncated towards zero.
void IntegerPart(Call& c) { c.Out(0) = std::trunc(c.In(0)); }

// PLIMIT: y = min(max(x, lo), hi).
void Limit(Call& c) {
    const double x = c.In(0), lo = c.In(1), hi = c.In(2);
    if (lo > hi) return c.Fail("the low limit " + Number(lo) + " lies above the high limit " + Number(hi));
    const int active = x < lo ? 1 : x > hi ? 2 : 0;   // the input y follows
    c.Out(0) = active == 1 ? lo : active == 2 ? hi : x;
    c.ClearDerivatives();
    if (c.WantsDerivatives()) c.Derivative(0, active, 1.0);
}

bool SameWord(std::string_view a, const char* b) {
    std::size_t i = 0;
    for (; i < a.size() && b[i]; ++i)
        if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i]))) return false;
    return i == a.size() && !b[i];
}

// PLMTD: the log-mean temperature difference of an exchanger from its hot inlet and outlet and
// cold inlet and outlet temperatures; the text names the flow arrangement.
void LogMeanTemperatureDifference(Call& c) {
    const double hotIn = c.In(0), hotOut = c.In(1), coldIn = c.In(2), coldOut = c.In(3);
    const std::string_view arrangement = c.InString(4);
    bool counter;
    if (SameWord(arrangement, "COUNTER") || SameWord(arrangement, "COUNTERCURRENT") || SameWord(arrangement, "COUNTER-CURRENT"))
        counter = true;
    else if (SameWord(arrangement, "COCURRENT") || SameWord(arrangement, "CO-CURRENT") || SameWord(arrangement, "PARALLEL"))
        counter = false;
    else
        return c.Fail("flow arrangement \"" + std::string(arrangement) + "\" is not COUNTER, COCURRENT or PARALLEL");
    // Counter-current: end 1 is the hot inlet facing the cold outlet; co-current: both inlets.
    const double d1 = counter ? hotIn - coldOut : hotIn - coldIn, d2 = counter ? hotOut - coldIn : hotOut - coldOut;
    if (!(d1 * d2 > 0.0))
        return c.Fail("the end temperature differences " + Number(d1) + " and " + Number(d2) + " must be nonzero and of one sign");
    const double r = d1 / d2, e = r - 1.0;
    double value, dd1, dd2;
    if (std::fabs(e) < 1e-5) {   // (d1 - d2) / ln(d1 / d2) tends to the mean; error below 1e-11 relative
        value = 0.5 * (d1 + d2);
        dd1 = dd2 = 0.5;
    } else {
        const double l = std::log(r);
        value = (d1 - d2) / l;
        dd1 = (l - 1.0 + 1.0 / r) / (l * l);
        dd2 = (r - 1.0 - l) / (l * l);
    }
    c.Out(0) = value;
    if (!c.WantsDerivatives()) return;
    c.ClearDerivatives();
    c.Derivative(0, 0, dd1);                  // hot inlet is in d1
    c.Derivative(0, 1, dd2);                  // hot outlet is in d2
    c.Derivative(0, counter ? 3 : 2, -dd1);   // cold end facing the hot inlet
    c.Derivative(0, counter ? 2 : 3, -dd2);
}

// PSOLMODE: what the simulator is solving (steady state 0, initialisation 1, dynamic 2).
void SolutionMode(Call& c) {
    const zorexp_host_services* s = zx::routine_support::Services();
    c.Out(0) = s && s->version >= 2 ? s->solution_mode() : ZOREXP_SOLUTION_STEADY_STATE;
}

}  // namespace

ZX_DENSE_ROUTINE(RX55IF_spdivi, Divide)
ZX_DENSE_ROUTINE(RX55IF_spminrmp, MinimumRamp)
ZX_DENSE_ROUTINE(RX55IF_spminarm, MinimumRampAdaptive)
ZX_SPARSE_ROUTINE(ZORM13_spPow, Power)
ZX_DENSE_ROUTINE(RX55IF_spcopy1, Copy)
ZX_DENSE_ROUTINE(RX55IF_spcopyz, CopyVector)
ZX_DENSE_ROUTINE(RX55IF_spdband, DeadBand)
ZX_DENSE_ROUTINE(RX55IF_spgauss, Gauss)
ZX_DENSE_ROUTINE(RX55IF_spint, IntegerPart)
ZX_DENSE_ROUTINE(RX55IF_splim, Limit)
ZX_DENSE_ROUTINE(RX55IF_splmtd, LogMeanTemperatureDifference)
ZX_DENSE_ROUTINE(RX55IF_spsolmod, SolutionMode)
