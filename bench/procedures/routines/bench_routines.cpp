// The routine library "ZxBenchRoutines": ZXB_mixture, a mixture property of the kind property
// routines compute, with analytic derivatives, over any number of components:
//   h = sum_i x_i (a_i + b_i T + c_i T^2) + R T sum_i x_i ln x_i
// It counts its calls and, when asked to, the distinct temperatures it was called with.
#include <cmath>
#include <set>

#include "routine_support.hpp"

namespace {

using zx::routine_support::Call;

constexpr double kGas = 8.314;
int g_calls = 0;
bool g_track = false;
std::set<double> g_temperatures;

double A(int i) { return -2.0e4 + 150.0 * i; }
double B(int i) { return 30.0 + 0.4 * i; }
double C(int i) { return 1e-3 * (1 + i % 7); }

void Mixture(Call& c) {
    ++g_calls;
    const double t = c.In(0);
    if (g_track) g_temperatures.insert(t);
    const double* x = c.InArray(1);
    const int n = c.InputDim(0);
    double h = 0.0, dT = 0.0;
    const bool derivatives = c.WantsDerivatives();
    for (int i = 0; i < n; ++i) {
        if (!(x[i] > 0.0)) return c.Fail("mole fractions must be positive");
        const double pure = A(i) + (B(i) + C(i) * t) * t, lnx = std::log(x[i]);
        h += x[i] * (pure + kGas * t * lnx);
        if (!derivatives) continue;
        dT += x[i] * (B(i) + 2.0 * C(i) * t + kGas * lnx);
        c.Derivative(0, 1 + i, pure + kGas * t * (lnx + 1.0));
    }
    c.Out(0) = h;
    if (derivatives) c.Derivative(0, 0, dT);
}

}  // namespace

ZX_DENSE_ROUTINE(ZXB_mixture, Mixture)

ZX_ROUTINE int zxb_calls(void) { return g_calls; }
ZX_ROUTINE int zxb_distinct_temperatures(void) { return static_cast<int>(g_temperatures.size()); }
ZX_ROUTINE void zxb_track(int on) { g_track = on != 0; }
ZX_ROUTINE void zxb_reset(void) {
    g_calls = 0;
    g_temperatures.clear();
}
