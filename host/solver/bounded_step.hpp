// Keeping Newton steps inside box bounds lower <= x <= upper.
//
// A step p from x is shortened uniformly, so it keeps the Newton direction:
// if the full step would cross a bound, only boundary_fraction of the distance
// to the first bound crossed is taken, which leaves the iterate strictly
// inside and lets it approach a solution lying on a bound geometrically.
// Components that sit on a bound and point outward are dropped first, since
// they would otherwise force a zero-length step.
#pragma once

namespace zx::solve {

struct StepLimit {
    double fraction = 1.0;  // of p, in (0, 1]; 0 only if p is all zero after freezing
    int limiting_index = -1;  // the unknown whose bound shortened the step, -1 if none did
};

// Zeroes p_i where x_i is on a bound and p_i points out of the box. Returns
// how many components were dropped.
int freeze_at_bounds(const double* x, double* p, const double* lower, const double* upper, int n);

StepLimit limit_step(const double* x, const double* p, const double* lower, const double* upper,
                     int n, double boundary_fraction);

// out = x + lambda * p, clipped into the box (guards against rounding).
void take_step(const double* x, const double* p, double lambda, const double* lower,
               const double* upper, int n, double* out);

// max_i |lambda * p_i| / max(1, |x_i|).
double relative_step_norm(const double* x, const double* p, double lambda, int n);

}  // namespace zx::solve
