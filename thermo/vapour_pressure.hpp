#pragma once
// Vapour pressure of one pure component: ln P and its first two temperature derivatives.
//   Antoine:    ln(P/kPa) = A - B/(t/C + C) inside its range; above the range the formula goes
//               on; below it ln P continues linearly in 1/T (Clausius-Clapeyron form) from the
//               lower limit, which stays finite where the formula has its pole.
//   Lee-Kesler: ln(P/Pc) = f0(Tr) + omega f1(Tr), the generalised correlation for components
//               without a fitted one; above Tc ln P continues linearly in 1/T from Tc.
namespace zx::thermo {

struct VapourPressureValues {
    double ln_p = 0.0;    // ln(P/Pa)
    double dln_p = 0.0;   // d ln P / dT, 1/K
    double d2ln_p = 0.0;  // d2 ln P / dT2, 1/K2
    bool outside = false;
};

struct VapourPressure {
    enum class Form { Antoine, LeeKesler };
    Form form = Form::Antoine;
    double A = 0.0, B = 0.0, C = 0.0;  // Antoine, ln kPa and C
    double t_min = 0.0, t_max = 0.0;   // K: the range
    double tc = 0.0, pc = 0.0, omega = 0.0;  // Lee-Kesler: K, Pa, -

    VapourPressureValues At(double T) const;
};

}  // namespace zx::thermo
