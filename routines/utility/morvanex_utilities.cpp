// Numeric utility routines of the routine library "Morvanex". docs/procedures.md tables what each
// computes; derivatives are returned where the declaration says so.
#include <cmath>
#include <string>

#include "routine_support.hpp"

namespace {

using zx::routine_support::Call;
using zx::routine_support::Number;

// PSQRT: y = sqrt(x). At x = 0 the derivative is infinite, which the runtime refuses.
void SquareRoot(Call& c) {
    const double x = c.In(0);
    if (x < 0.0) return c.Fail("square root of the negative number " + Number(x));
    c.Out(0) = std::sqrt(x);
    if (c.WantsDerivatives()) c.Derivative(0, 0, 0.5 / std::sqrt(x));
}

// PLIMIT_ABS: y = sign(x) * min(max(|x|, lo), hi), the magnitude of x kept within [lo, hi].
void LimitMagnitude(Call& c) {
    const double x = c.In(0), lo = c.In(1), hi = c.In(2);
    if (lo < 0.0 || lo > hi) return c.Fail("the magnitude limits " + Number(lo) + " and " + Number(hi) + " do not satisfy 0 <= low <= high");
    const double sign = x < 0.0 ? -1.0 : 1.0, magnitude = std::fabs(x);
    c.ClearDerivatives();
    if (magnitude < lo) {
        c.Out(0) = sign * lo;
        if (c.WantsDerivatives()) c.Derivative(0, 1, sign);
    } else if (magnitude > hi) {
        c.Out(0) = sign * hi;
        if (c.WantsDerivatives()) c.Derivative(0, 2, sign);
    } else {
        c.Out(0) = x;
        if (c.WantsDerivatives()) c.Derivative(0, 0, 1.0);
    }
}

// PMIN: y = the smallest of the first n elements of x.
void Minimum(Call& c) {
    const int size = c.InputDim(0), n = c.InInteger(1);
    if (n < 1 || n > size) return c.Fail("count " + std::to_string(n) + " is not between 1 and the vector's size " + std::to_string(size));
    const double* x = c.InArray(0);
    int at = 0;
    for (int i = 1; i < n; ++i)
        if (x[i] < x[at]) at = i;
    c.Out(0) = x[at];
    c.ClearDerivatives();
    if (c.WantsDerivatives()) c.Derivative(0, at, 1.0);
}

// PRAMP: y goes from y0 at t0 to y1 at t1 along a straight line; y0 before t0, y1 after t1.
void Ramp(Call& c) {
    const double t = c.In(0), t0 = c.In(1), t1 = c.In(2), y0 = c.In(3), y1 = c.In(4);
    if (t1 < t0) return c.Fail("the ramp ends (" + Number(t1) + ") before it starts (" + Number(t0) + ")");
    c.ClearDerivatives();
    if (t <= t0 && t < t1) {
        c.Out(0) = y0;
        if (c.WantsDerivatives()) c.Derivative(0, 3, 1.0);
        return;
    }
    if (t >= t1) {
        c.Out(0) = y1;
        if (c.WantsDerivatives()) c.Derivative(0, 4, 1.0);
        return;
    }
    const double span = t1 - t0, s = (t - t0) / span, rise = y1 - y0;
    c.Out(0) = y0 + s * rise;
    if (!c.WantsDerivatives()) return;
    c.Derivative(0, 0, rise / span);
    c.Derivative(0, 1, rise * (t - t1) / (span * span));
    c.Derivative(0, 2, -rise * (t - t0) / (span * span));
    c.Derivative(0, 3, 1.0 - s);
    c.Derivative(0, 4, s);
}

// PPROD: y(j) = sum over i of x(i) * A(i, j), the row vector x times the matrix A.
void VectorTimesMatrix(Call& c) {
    const int n = c.InputDim(0), rows = c.InputDim(1), columns = c.InputDim(2), m = c.OutputDim(0);
    if (rows != n || columns != m)
        return c.Fail("sizes do not fit: x has " + std::to_string(n) + " elements, A is " + std::to_string(rows) + " x " +
                      std::to_string(columns) + ", y has " + std::to_string(m));
    const double *x = c.InArray(0), *a = c.InArray(1);
    double* y = c.OutArray(0);
    for (int j = 0; j < m; ++j) {
        double sum = 0.0;
        for (int i = 0; i < n; ++i) sum += x[i] * a[i * columns + j];
        y[j] = sum;
    }
}

// PPROD1: y = sum over i of x(i) * z(i).
void DotProduct(Call& c) {
    const int n = c.InputDim(0);
    if (c.InputDim(1) != n) return c.Fail("the vectors have " + std::to_string(n) + " and " + std::to_string(c.InputDim(1)) + " elements");
    const double *x = c.InArray(0), *z = c.InArray(1);
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += x[i] * z[i];
    c.Out(0) = sum;
}

// PMULT2D: y(i) = sum over j of A(i, j) * x(j), the matrix A times the column vector x.
void MatrixTimesVector(Call& c) {
    const int rows = c.InputDim(0), columns = c.InputDim(1), n = c.InputDim(2), m = c.OutputDim(0);
    if (columns != n || rows != m)
        return c.Fail("sizes do not fit: A is " + std::to_string(rows) + " x " + std::to_string(columns) + ", x has " +
                      std::to_string(n) + " elements, y has " + std::to_string(m));
    const double *a = c.InArray(0), *x = c.InArray(1);
    double* y = c.OutArray(0);
    c.ClearDerivatives();
    for (int i = 0; i < m; ++i) {
        double sum = 0.0;
        for (int j = 0; j < n; ++j) {
            sum += a[i * columns + j] * x[j];
            if (c.WantsDerivatives()) {
                c.Derivative(i, i * columns + j, x[j]);               // d y(i) / d A(i, j)
                c.Derivative(i, rows * columns + j, a[i * columns + j]);   // d y(i) / d x(j)
            }
        }
        y[i] = sum;
    }
}

}  // namespace

ZX_DENSE_ROUTINE(RX55IF_spsqrt, SquareRoot)
ZX_DENSE_ROUTINE(RX55IF_splim_abs, LimitMagnitude)
ZX_DENSE_ROUTINE(RX55IF_sppmin, Minimum)
ZX_DENSE_ROUTINE(RX55IF_spramp, Ramp)
ZX_DENSE_ROUTINE(RX55IF_spprod, VectorTimesMatrix)
ZX_DENSE_ROUTINE(RX55IF_spprd1, DotProduct)
ZX_DENSE_ROUTINE(RX55IF_spmatr, MatrixTimesVector)
