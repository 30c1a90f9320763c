#include "solver/bounded_step.hpp"

#include <algorithm>
#include <cmath>

namespace zx::solve {

int freeze_at_bounds(const double* x, double* p, const double* lower, const double* upper, int n) {
    int dropped = 0;
    for (int i = 0; i < n; ++i) {
        if ((p[i] < 0.0 && x[i] <= lower[i]) || (p[i] > 0.0 && x[i] >= upper[i])) {
            p[i] = 0.0;
            ++dropped;
        }
    }
    return dropped;
}

StepLimit limit_step(const double* x, const double* p, const double* lower, const double* upper,
                     int n, double boundary_fraction) {
    double reach = 1.0;  // largest fraction of p that stays inside
    int limiting = -1;
    for (int i = 0; i < n; ++i) {
        double room;
        if (p[i] < 0.0) room = (lower[i] - x[i]) / p[i];
        else if (p[i] > 0.0) room = (upper[i] - x[i]) / p[i];
        else continue;
        if (room < reach) {  // infinite bounds give infinite room
            reach = std::max(room, 0.0);
            limiting = i;
        }
    }
    if (limiting < 0) return {1.0, -1};
    return {boundary_fraction * reach, limiting};
}

void take_step(const double* x, const double* p, double lambda, const double* lower,
               const double* upper, int n, double* out) {
    for (int i = 0; i < n; ++i) out[i] = std::clamp(x[i] + lambda * p[i], lower[i], upper[i]);
}

double relative_step_norm(const double* x, const double* p, double lambda, int n) {
    double norm = 0.0;
    for (int i = 0; i < n; ++i) {
        norm = std::max(norm, std::fabs(lambda * p[i]) / std::max(1.0, std::fabs(x[i])));
    }
    return norm;
}

}  // namespace zx::solve
