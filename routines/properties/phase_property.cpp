#include "phase_property.hpp"

#include <fmt/format.h>

#include "routine_guard.hpp"
#include "thermo/units.hpp"

namespace zx::routines {
namespace {

using thermo::Gradient;
using thermo::PhaseProperties;

unsigned RequestOf(Quantity q) {
    switch (q) {
        case Quantity::Enthalpy: return thermo::kEnthalpy;
        case Quantity::Entropy: return thermo::kEntropy;
        case Quantity::HeatCapacityP:
        case Quantity::HeatCapacityV: return thermo::kHeatCapacity;
        default: return thermo::kVolume;
    }
}

struct Scalar {
    double value = 0.0, dT = 0.0, dP = 0.0;  // per K and per Pa
};

// Value in output units and its gradient; the composition part goes to `dz`.
Scalar Extract(Quantity q, const PhaseProperties& p, const thermo::Mixture& m, const double* z, bool gradients, double* dz) {
    const std::size_t n = m.Size();
    const auto scaled = [&](double value, const Gradient& g, double f) {
        if (gradients)
            for (std::size_t k = 0; k < n; ++k) dz[k] = f * g.dz[k];
        return Scalar{f * value, f * g.dT, f * g.dP};
    };
    switch (q) {
        case Quantity::Enthalpy: return scaled(p.h, p.dh, thermo::kGJPerKmolPerJPerMol);
        case Quantity::Entropy: return scaled(p.s, p.ds, 1.0);
        case Quantity::HeatCapacityP: return scaled(p.cp, p.dcp, 1.0);
        case Quantity::HeatCapacityV: return scaled(p.cv, p.dcv, 1.0);
        default: break;
    }
    // Densities: kmol/m3 = 1e-3 / v (v in m3/mol); kg/m3 = that times the molecular weight.
    double mw = 1.0;
    if (q == Quantity::MassDensity) {
        mw = 0.0;
        for (std::size_t k = 0; k < n; ++k) mw += z[k] * m.components[k]->molecular_weight;
    }
    const double rho = 1e-3 * mw / p.v, f = -rho / p.v;
    if (gradients)
        for (std::size_t k = 0; k < n; ++k)
            dz[k] = f * p.dv.dz[k] + (q == Quantity::MassDensity ? 1e-3 * m.components[k]->molecular_weight / p.v : 0.0);
    return {rho, f * p.dv.dT, f * p.dv.dP};
}

}  // namespace

std::size_t CompositionSize(const DenseCall& call, int dim, const ListContext& context) {
    const int size = call.input_dims[dim];
    if (size != static_cast<int>(context.Size()))
        throw RoutineError(fmt::format("a composition of {} elements was passed for a component list of {}", size, context.Size()));
    return context.Size();
}

void RequireOutputPerComponent(const DenseCall& call, const ListContext& context) {
    if (call.output_dims[0] != static_cast<int>(context.Size()))
        throw RoutineError(fmt::format("the output has {} elements for a component list of {}", call.output_dims[0], context.Size()));
}

void PhasePropertyRoutine(const DenseCall& call, const char* entry, const char* routine, thermo::Phase phase, Quantity quantity) {
    Guarded(call, entry, routine, [&] {
        ListContext& c = ContextFor(call);
        const std::size_t n = CompositionSize(call, 0, c);
        const double T = KelvinFromCelsius(call.Real(0));
        const double P = PascalFromBar(call.Real(1));
        const double sum = Normalised(entry, routine, "mole fractions", call.Array(2), n, c.z.data());
        const bool gradients = call.WantsDerivatives();
        c.first.ClearNotes();
        c.model->Evaluate(phase, T, P, c.z.data(), RequestOf(quantity) | (gradients ? thermo::kGradients : 0u), c.first);
        NoteRanges(entry, routine, c.Mixture(), c.first.notes.data());
        const Scalar s = Extract(quantity, c.first, c.Mixture(), c.z.data(), gradients, c.row.data());
        *call.Output(0) = s.value;
        if (!gradients) return;
        double* row = call.DerivativeRow(0);
        row[0] = s.dT;
        row[1] = s.dP * thermo::kPascalPerBar;
        ProjectOnFractions(c.row.data(), c.z.data(), sum, n, 1.0, row + 2);
    });
}

}  // namespace zx::routines
