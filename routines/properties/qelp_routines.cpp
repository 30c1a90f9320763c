// The routines of the property library "qelp": phase properties, fugacity coefficients,
// K-values, molecular weights, vapour pressure, bubble and dew temperatures and ideal-gas Gibbs
// energies, for the component list of the calling model and the method its list names.
#include <cmath>

#include <fmt/format.h>

#include "dense_call.hpp"
#include "phase_property.hpp"
#include "routine_guard.hpp"
#include "thermo/ideal_gas_state.hpp"
#include "thermo/units.hpp"

using zx::routines::DenseCall;
using zx::routines::ListContext;
using zx::routines::Quantity;
using zx::routines::RoutineError;
namespace thermo = zx::thermo;
namespace routines = zx::routines;

#define X(entry, routine, phase, quantity) \
    ZX_DENSE_ROUTINE(entry) { routines::PhasePropertyRoutine(call, #entry, #routine, thermo::Phase::phase, Quantity::quantity); }
#include "qelp_phase_properties.def"
#undef X

namespace {

double Exp(double ln, const char* what, std::size_t i) {
    if (ln > 700.0) throw RoutineError(fmt::format("{} of component {} is too large to represent (ln = {})", what, i + 1, ln));
    return std::exp(ln);
}

// Fugacity coefficients of one phase at (T, P, x) into output 0, with derivatives.
void Fugacity(const DenseCall& call, const char* entry, const char* routine, thermo::Phase phase) {
    routines::Guarded(call, entry, routine, [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = routines::CompositionSize(call, 0, c);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        const double P = routines::PascalFromBar(call.Real(1));
        const double sum = routines::Normalised(entry, routine, "mole fractions", call.Array(2), n, c.z.data());
        const bool gradients = call.WantsDerivatives();
        c.first.ClearNotes();
        c.model->Evaluate(phase, T, P, c.z.data(), thermo::kFugacity | (gradients ? thermo::kGradients : 0u), c.first);
        routines::NoteRanges(entry, routine, c.Mixture(), c.first.notes.data());
        double* out = call.Output(0);
        for (std::size_t i = 0; i < n; ++i) {
            out[i] = Exp(c.first.ln_phi[i], "the fugacity coefficient", i);
            if (!gradients) continue;
            const double* g = &c.first.d_ln_phi[i * (n + 2)];
            double* row = call.DerivativeRow(static_cast<int>(i));
            row[0] = out[i] * g[0];
            row[1] = out[i] * g[1] * thermo::kPascalPerBar;
            routines::ProjectOnFractions(g + 2, c.z.data(), sum, n, out[i], row + 2);
        }
    });
}

// Bubble (liquid x given) or dew (vapour y given) temperature in C at P.
void Saturation(const DenseCall& call, const char* entry, const char* routine, bool bubble) {
    routines::Guarded(call, entry, routine, [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = routines::CompositionSize(call, 0, c);
        const double P = routines::PascalFromBar(call.Real(0));
        routines::Normalised(entry, routine, "mole fractions", call.Array(1), n, c.z.data());
        const double T = bubble ? c.equilibrium->BubbleTemperature(P, c.z.data(), c.incipient)
                                : c.equilibrium->DewTemperature(P, c.z.data(), c.incipient);
        routines::NoteRanges(entry, routine, c.Mixture(), c.equilibrium->Notes().data());
        *call.Output(0) = T - thermo::kCelsiusOffset;
    });
}

}  // namespace

ZX_DENSE_ROUTINE(RX55IF_gpidlfu) { Fugacity(call, "RX55IF_gpidlfu", "PFUGA_LIQ", thermo::Phase::Liquid); }
ZX_DENSE_ROUTINE(RX55IF_gpidvfu) { Fugacity(call, "RX55IF_gpidvfu", "PFUGA_VAP", thermo::Phase::Vapour); }

// PKVALUES: K_i = phi_i(liquid x) / phi_i(vapour y) at (T, P).
ZX_DENSE_ROUTINE(RX55IF_gpid0kx) {
    const char* entry = "RX55IF_gpid0kx";
    const char* routine = "PKVALUES";
    routines::Guarded(call, entry, routine, [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = routines::CompositionSize(call, 0, c);
        routines::CompositionSize(call, 1, c);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        const double P = routines::PascalFromBar(call.Real(1));
        const double sx = routines::Normalised(entry, routine, "liquid mole fractions", call.Array(2), n, c.z.data());
        const double sy = routines::Normalised(entry, routine, "vapour mole fractions", call.Array(3), n, c.z2.data());
        const bool gradients = call.WantsDerivatives();
        const unsigned request = thermo::kFugacity | (gradients ? thermo::kGradients : 0u);
        c.first.ClearNotes();
        c.second.ClearNotes();
        c.model->Evaluate(thermo::Phase::Liquid, T, P, c.z.data(), request, c.first);
        c.model->Evaluate(thermo::Phase::Vapour, T, P, c.z2.data(), request, c.second);
        routines::NoteRanges(entry, routine, c.Mixture(), c.first.notes.data());
        routines::NoteRanges(entry, routine, c.Mixture(), c.second.notes.data());
        double* out = call.Output(0);
        for (std::size_t i = 0; i < n; ++i) {
            out[i] = Exp(c.first.ln_phi[i] - c.second.ln_phi[i], "the K-value", i);
            if (!gradients) continue;
            const double* gl = &c.first.d_ln_phi[i * (n + 2)];
            const double* gv = &c.second.d_ln_phi[i * (n + 2)];
            double* row = call.DerivativeRow(static_cast<int>(i));
            row[0] = out[i] * (gl[0] - gv[0]);
            row[1] = out[i] * (gl[1] - gv[1]) * thermo::kPascalPerBar;
            routines::ProjectOnFractions(gl + 2, c.z.data(), sx, n, out[i], row + 2);
            routines::ProjectOnFractions(gv + 2, c.z2.data(), sy, n, -out[i], row + 2 + n);
        }
    });
}

// PMOLWEIGHT: molecular weight of the mixture x, kg/kmol.
ZX_DENSE_ROUTINE(RX55IF_gpi0wx) {
    routines::Guarded(call, "RX55IF_gpi0wx", "PMOLWEIGHT", [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = routines::CompositionSize(call, 0, c);
        routines::Normalised("RX55IF_gpi0wx", "PMOLWEIGHT", "mole fractions", call.Array(0), n, c.z.data());
        double mw = 0.0;
        for (std::size_t i = 0; i < n; ++i) mw += c.z[i] * c.Mixture().components[i]->molecular_weight;
        *call.Output(0) = mw;
    });
}

// PMOLWEIGHTS: the components' molecular weights, kg/kmol.
ZX_DENSE_ROUTINE(RX55IF_gpizw0) {
    routines::Guarded(call, "RX55IF_gpizw0", "PMOLWEIGHTS", [&] {
        ListContext& c = routines::ContextFor(call);
        routines::RequireOutputPerComponent(call, c);
        for (std::size_t i = 0; i < c.Size(); ++i) call.Output(0)[i] = c.Mixture().components[i]->molecular_weight;
    });
}

// PVAP_PRESSURE: Raoult's-law bubble pressure sum x_i Psat_i(T) of the liquid x, bar.
ZX_DENSE_ROUTINE(RX55IF_gpi0px) {
    const char* entry = "RX55IF_gpi0px";
    routines::Guarded(call, entry, "PVAP_PRESSURE", [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = routines::CompositionSize(call, 0, c);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        routines::Normalised(entry, "PVAP_PRESSURE", "mole fractions", call.Array(1), n, c.z.data());
        c.model->Require(thermo::kDataVapourPressure, "vapour pressure");
        c.first.ClearNotes();
        double p = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            const thermo::VapourPressureValues v = c.Mixture().components[i]->vapour_pressure->At(T);
            if (v.outside) c.first.notes[i] |= thermo::kNoteVapourPressure;
            p += c.z[i] * std::exp(v.ln_p);
        }
        routines::NoteRanges(entry, "PVAP_PRESSURE", c.Mixture(), c.first.notes.data());
        *call.Output(0) = p / thermo::kPascalPerBar;
    });
}

ZX_DENSE_ROUTINE(RX55IF_gpibtx) { Saturation(call, "RX55IF_gpibtx", "PBUBT", true); }
ZX_DENSE_ROUTINE(RX55IF_gpidtx) { Saturation(call, "RX55IF_gpidtx", "PDEWT", false); }

// PGIBBS_MOL_IDLGAS: each component's ideal-gas Gibbs energy at T and 1 bar, GJ/kmol, relative
// to the elements (equal to its formation Gibbs energy at 25 C).
ZX_DENSE_ROUTINE(RX55IF_gpizgx_idlgas) {
    const char* entry = "RX55IF_gpizgx_idlgas";
    routines::Guarded(call, entry, "PGIBBS_MOL_IDLGAS", [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = routines::CompositionSize(call, 0, c);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        routines::RequireOutputPerComponent(call, c);
        c.model->Require(thermo::kDataIdealGas | thermo::kDataFormationGibbs, "ideal-gas Gibbs energy");
        c.first.ClearNotes();
        for (std::size_t i = 0; i < n; ++i) {
            const thermo::IdealGasState g = thermo::PureIdealGas(*c.Mixture().components[i], T);
            if (g.outside) c.first.notes[i] |= thermo::kNoteHeatCapacity;
            call.Output(0)[i] = (g.h - T * g.s) * thermo::kGJPerKmolPerJPerMol;
        }
        routines::NoteRanges(entry, "PGIBBS_MOL_IDLGAS", c.Mixture(), c.first.notes.data());
    });
}
