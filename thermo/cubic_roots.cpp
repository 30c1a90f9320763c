#include "thermo/cubic_roots.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zx::thermo {

int CubicRealRoots(double c2, double c1, double c0, double roots[3]) {
    const double shift = c2 / 3.0;
    const double p = c1 - c2 * c2 / 3.0;
    const double q = 2.0 * c2 * c2 * c2 / 27.0 - c2 * c1 / 3.0 + c0;
    const double disc = q * q / 4.0 + p * p * p / 27.0;
    int n = 0;
    if (disc > 0.0) {
        const double s = std::sqrt(disc);
        roots[n++] = std::cbrt(-q / 2.0 + s) + std::cbrt(-q / 2.0 - s) - shift;
    } else {
        const double r = std::sqrt(std::max(-p / 3.0, 0.0));
        const double c = r > 0.0 ? std::clamp(-q / (2.0 * r * r * r), -1.0, 1.0) : 0.0;
        const double phi = std::acos(c);
        for (int k = 0; k < 3; ++k) roots[n++] = 2.0 * r * std::cos((phi + 2.0 * std::numbers::pi * k) / 3.0) - shift;
    }
    for (int k = 0; k < n; ++k) {
        double& z = roots[k];
        for (int it = 0; it < 3; ++it) {
            const double f = ((z + c2) * z + c1) * z + c0;
            const double fz = (3.0 * z + 2.0 * c2) * z + c1;
            if (fz == 0.0) break;
            z -= f / fz;
        }
    }
    std::sort(roots, roots + n);
    return n;
}

}  // namespace zx::thermo
