#include "routine_guard.hpp"

#include "thermo/units.hpp"

namespace zx::routines {

double KelvinFromCelsius(double t) {
    const double k = t + thermo::kCelsiusOffset;
    if (!(k > 0.0) || !std::isfinite(t)) throw RoutineError(fmt::format("temperature {} C is not above absolute zero", t));
    return k;
}

double PascalFromBar(double p) {
    if (!(p > 0.0) || !std::isfinite(p)) throw RoutineError(fmt::format("pressure {} bar is not positive", p));
    return p * thermo::kPascalPerBar;
}

double Normalised(const char* entry, const char* routine, const char* what, const double* x, std::size_t n, double* z) {
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        if (!(x[i] >= 0.0) || !std::isfinite(x[i]))
            throw RoutineError(fmt::format("{}: element {} is {}, but fractions must be finite and not negative", what, i + 1, x[i]));
        sum += x[i];
    }
    if (!(sum > 0.0)) throw RoutineError(fmt::format("{} sum to 0", what));
    for (std::size_t i = 0; i < n; ++i) z[i] = x[i] / sum;
    if (std::abs(sum - 1.0) > 1e-9)
        NoteOnce(entry, what, fmt::format("{}: {} sum to {:.10g}, not 1; they are normalised", routine, what, sum));
    return sum;
}

void ProjectOnFractions(const double* g, const double* z, double sum, std::size_t n, double scale, double* out) {
    double mean = 0.0;
    for (std::size_t j = 0; j < n; ++j) mean += z[j] * g[j];
    for (std::size_t k = 0; k < n; ++k) out[k] = scale * (g[k] - mean) / sum;
}

}  // namespace zx::routines
