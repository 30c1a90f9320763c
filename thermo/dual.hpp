#pragma once
// A forward-mode dual number with N directional derivatives held inline. The property models
// write their residual (departure) functions once, as templates, and get the exact partial
// derivatives with respect to a handful of mixture quantities from one evaluation. Eigen's
// AutoDiffScalar would do the same but lives in its unsupported module; this is the small
// subset the models need, with no allocation.
#include <array>
#include <cmath>

namespace zx::thermo {

template <int N>
struct Dual {
    double v = 0.0;
    std::array<double, N> d{};

    Dual() = default;
    Dual(double value) : v(value) {}  // a constant (implicit on purpose: mixes with doubles)
    static Dual Variable(double value, int index) {
        Dual x(value);
        x.d[index] = 1.0;
        return x;
    }
};

template <int N>
Dual<N> operator+(const Dual<N>& a, const Dual<N>& b) {
    Dual<N> r(a.v + b.v);
    for (int i = 0; i < N; ++i) r.d[i] = a.d[i] + b.d[i];
    return r;
}
template <int N>
Dual<N> operator-(const Dual<N>& a, const Dual<N>& b) {
    Dual<N> r(a.v - b.v);
    for (int i = 0; i < N; ++i) r.d[i] = a.d[i] - b.d[i];
    return r;
}
template <int N>
Dual<N> operator-(const Dual<N>& a) {
    Dual<N> r(-a.v);
    for (int i = 0; i < N; ++i) r.d[i] = -a.d[i];
    return r;
}
template <int N>
Dual<N> operator*(const Dual<N>& a, const Dual<N>& b) {
    Dual<N> r(a.v * b.v);
    for (int i = 0; i < N; ++i) r.d[i] = a.d[i] * b.v + a.v * b.d[i];
    return r;
}
template <int N>
Dual<N> operator/(const Dual<N>& a, const Dual<N>& b) {
    const double inv = 1.0 / b.v;
    Dual<N> r(a.v * inv);
    for (int i = 0; i < N; ++i) r.d[i] = (a.d[i] - r.v * b.d[i]) * inv;
    return r;
}
template <int N> Dual<N> operator+(const Dual<N>& a, double b) { return a + Dual<N>(b); }
template <int N> Dual<N> operator+(double a, const Dual<N>& b) { return Dual<N>(a) + b; }
template <int N> Dual<N> operator-(const Dual<N>& a, double b) { return a - Dual<N>(b); }
template <int N> Dual<N> operator-(double a, const Dual<N>& b) { return Dual<N>(a) - b; }
template <int N> Dual<N> operator*(const Dual<N>& a, double b) { return a * Dual<N>(b); }
template <int N> Dual<N> operator*(double a, const Dual<N>& b) { return Dual<N>(a) * b; }
template <int N> Dual<N> operator/(const Dual<N>& a, double b) { return a / Dual<N>(b); }
template <int N> Dual<N> operator/(double a, const Dual<N>& b) { return Dual<N>(a) / b; }

template <int N>
Dual<N> log(const Dual<N>& a) {
    Dual<N> r(std::log(a.v));
    for (int i = 0; i < N; ++i) r.d[i] = a.d[i] / a.v;
    return r;
}

inline double Value(double x) { return x; }
template <int N>
double Value(const Dual<N>& x) { return x.v; }

}  // namespace zx::thermo
