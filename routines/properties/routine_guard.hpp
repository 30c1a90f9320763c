#pragma once
// The frame of every property routine: a prepare or initialise call starts a new solve; any
// failure sets *status to 0 (ZOREXP_STATUS_BAD_INPUT when the inputs name a component the
// database does not know) and reports "ROUTINE: why" to the host; outputs and derivatives that
// are not finite fail the call instead of reaching the solver.
#include <cmath>
#include <exception>

#include <fmt/format.h>

#include "dense_call.hpp"
#include "property_services.hpp"

namespace zx::routines {

template <class Body>
void Guarded(const DenseCall& call, const char* entry, const char* routine, Body&& body) {
    try {
        if (call.StartsSeries()) StartSolve();
        body();
        const int outputs = *call.output_elements;
        for (int o = 0; o < outputs; ++o)
            if (!std::isfinite(call.outputs[call.output_offsets[0] - 1 + o]))
                throw RoutineError(fmt::format("output element {} is not finite", o + 1));
        if (call.WantsDerivatives())
            for (int k = 0; k < outputs * *call.input_elements; ++k)
                if (!std::isfinite(call.derivatives[k])) throw RoutineError(fmt::format("derivative {} is not finite", k + 1));
    } catch (const RoutineInputError& e) {
        *call.status = ZOREXP_STATUS_BAD_INPUT;
        ReportError(entry, fmt::format("{}: {}", routine, e.what()));
    } catch (const std::exception& e) {
        *call.status = 0;
        ReportError(entry, fmt::format("{}: {}", routine, e.what()));
    }
}

// Input checks with messages naming the value (temperatures in C, pressures in bar).
double KelvinFromCelsius(double t);
double PascalFromBar(double p);
// Checks n mole fractions (finite, not negative, positive sum), writes them normalised to z and
// returns their sum; a sum other than one is noted once per solve.
double Normalised(const char* entry, const char* routine, const char* what, const double* x, std::size_t n, double* z);
// Turns a gradient with respect to normalised fractions z into one with respect to the fractions
// as given: d/dx_k = (g_k - sum_j z_j g_j) / sum, scaled by `scale`, written to out[0..n).
void ProjectOnFractions(const double* g, const double* z, double sum, std::size_t n, double scale, double* out);

}  // namespace zx::routines
