// The routines of the local-model library "VXPropMod": PLIQUID_PAR and PVAPOR_PAR fit a local
// parameter set at the state they are given from the list's rigorous method; the other routines
// evaluate the local forms (see local_parameter_sets.hpp) from that set's id alone.
#include <cmath>

#include <fmt/format.h>

#include "dense_call.hpp"
#include "list_context.hpp"
#include "local_parameter_sets.hpp"
#include "phase_property.hpp"
#include "routine_guard.hpp"
#include "thermo/units.hpp"

using zx::routines::DenseCall;
using zx::routines::ListContext;
using zx::routines::LocalParameters;
using zx::routines::RoutineError;
namespace thermo = zx::thermo;
namespace routines = zx::routines;

namespace {

// Partial molar values from a mixture value and its composition gradient: f + g_i - sum_j z_j g_j.
void PartialMolar(double f, const std::vector<double>& g, const std::vector<double>& z, std::vector<double>& out) {
    double mean = 0.0;
    for (std::size_t j = 0; j < z.size(); ++j) mean += z[j] * g[j];
    out.resize(z.size());
    for (std::size_t i = 0; i < z.size(); ++i) out[i] = f + g[i] - mean;
}

void Fit(const DenseCall& call, const char* entry, const char* routine, thermo::Phase phase) {
    routines::Guarded(call, entry, routine, [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = routines::CompositionSize(call, 0, c);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        const double P = routines::PascalFromBar(call.Real(1));
        routines::Normalised(entry, routine, "mole fractions", call.Array(2), n, c.z.data());
        c.first.ClearNotes();
        c.model->Evaluate(phase, T, P, c.z.data(), thermo::kEnthalpy | thermo::kHeatCapacity | thermo::kVolume | thermo::kGradients, c.first);
        routines::NoteRanges(entry, routine, c.Mixture(), c.first.notes.data());
        LocalParameters& set = routines::LocalParametersAt(call.inputs, phase == thermo::Phase::Liquid);
        set.T = T;
        set.P = P;
        PartialMolar(c.first.h, c.first.dh.dz, c.z, set.h);
        PartialMolar(c.first.cp, c.first.dcp.dz, c.z, set.c);
        set.mw.resize(n);
        double mw = 0.0;
        for (std::size_t i = 0; i < n; ++i) mw += c.z[i] * (set.mw[i] = c.Mixture().components[i]->molecular_weight);
        set.rho_mass = 1e-3 * mw / c.first.v;
        set.beta = -c.first.dv.dT / c.first.v;
        set.z_factor = P * c.first.v / (thermo::kGasConstant * T);
        set.dh_dP = c.first.dh.dP;
        *call.Output(0) = set.id;
    });
}

std::size_t SizeOf(const DenseCall& call, int dim, const LocalParameters& set) {
    if (call.input_dims[dim] != static_cast<int>(set.h.size()))
        throw RoutineError(fmt::format("a composition of {} elements was passed for a parameter set of {} components", call.input_dims[dim], set.h.size()));
    return set.h.size();
}

// sum_i z_i (hbar_i + cbar_i (T - T*)) in GJ/kmol; `terms` receives the per-component brackets.
double LocalEnthalpy(const LocalParameters& set, double T, const std::vector<double>& z, std::vector<double>& terms, double& cp) {
    double h = 0.0;
    cp = 0.0;
    for (std::size_t i = 0; i < z.size(); ++i) {
        terms[i] = (set.h[i] + set.c[i] * (T - set.T)) * thermo::kGJPerKmolPerJPerMol;
        h += z[i] * terms[i];
        cp += z[i] * set.c[i] * thermo::kGJPerKmolPerJPerMol;
    }
    return h;
}

// The routine's work space for a parameter set of n components.
std::vector<double>& Scratch(std::size_t n, int which) {
    static std::vector<double> scratch[2];
    scratch[which].resize(n);
    return scratch[which];
}

}  // namespace

ZX_DENSE_ROUTINE(RX55IF_gpllpr) { Fit(call, "RX55IF_gpllpr", "PLIQUID_PAR", thermo::Phase::Liquid); }
ZX_DENSE_ROUTINE(RX55IF_gplvpr) { Fit(call, "RX55IF_gplvpr", "PVAPOR_PAR", thermo::Phase::Vapour); }

// PENTH_MOL_LIQL (T, x, id, phase index 1) -> liquid enthalpy, GJ/kmol.
ZX_DENSE_ROUTINE(RX55IF_qelplex) {
    const char* entry = "RX55IF_qelplex";
    routines::Guarded(call, entry, "PENTH_MOL_LIQL", [&] {
        const LocalParameters& set = routines::FindLocalParameters(call.Real(2), true);
        if (call.Integer(3) != 1) throw RoutineError(fmt::format("phase index {} is not 1, the liquid of the parameter set", call.Integer(3)));
        const std::size_t n = SizeOf(call, 0, set);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        std::vector<double>& z = Scratch(n, 0);
        std::vector<double>& terms = Scratch(n, 1);
        const double sum = routines::Normalised(entry, "PENTH_MOL_LIQL", "mole fractions", call.Array(1), n, z.data());
        double cp = 0.0;
        *call.Output(0) = LocalEnthalpy(set, T, z, terms, cp);
        if (!call.WantsDerivatives()) return;
        double* row = call.DerivativeRow(0);
        row[0] = cp;
        routines::ProjectOnFractions(terms.data(), z.data(), sum, n, 1.0, row + 1);
        row[n + 1] = row[n + 2] = 0.0;
    });
}

// PDENS_MASS_LIQL (T, id, phase index 1) -> liquid density, kg/m3.
ZX_DENSE_ROUTINE(RX55IF_qelpldx) {
    routines::Guarded(call, "RX55IF_qelpldx", "PDENS_MASS_LIQL", [&] {
        const LocalParameters& set = routines::FindLocalParameters(call.Real(1), true);
        if (call.Integer(2) != 1) throw RoutineError(fmt::format("phase index {} is not 1, the liquid of the parameter set", call.Integer(2)));
        const double T = routines::KelvinFromCelsius(call.Real(0));
        const double rho = set.rho_mass * std::exp(set.beta * (T - set.T));
        *call.Output(0) = rho;
        if (!call.WantsDerivatives()) return;
        double* row = call.DerivativeRow(0);
        row[0] = set.beta * rho;
        row[1] = row[2] = 0.0;
    });
}

// PMOLWEIGHTL (x, id) -> molecular weight, kg/kmol.
ZX_DENSE_ROUTINE(RX55IF_qelp0wx) {
    routines::Guarded(call, "RX55IF_qelp0wx", "PMOLWEIGHTL", [&] {
        const LocalParameters& set = routines::FindLocalParameters(call.Real(1), true);
        const std::size_t n = SizeOf(call, 0, set);
        std::vector<double>& z = Scratch(n, 0);
        const double sum = routines::Normalised("RX55IF_qelp0wx", "PMOLWEIGHTL", "mole fractions", call.Array(0), n, z.data());
        double mw = 0.0;
        for (std::size_t i = 0; i < n; ++i) mw += z[i] * set.mw[i];
        *call.Output(0) = mw;
        if (!call.WantsDerivatives()) return;
        double* row = call.DerivativeRow(0);
        routines::ProjectOnFractions(set.mw.data(), z.data(), sum, n, 1.0, row);
        row[n] = 0.0;
    });
}

// PENTH_MOL_VAPL (T, P, y, id) -> vapour enthalpy, GJ/kmol.
ZX_DENSE_ROUTINE(RX55IF_qelpvex) {
    const char* entry = "RX55IF_qelpvex";
    routines::Guarded(call, entry, "PENTH_MOL_VAPL", [&] {
        const LocalParameters& set = routines::FindLocalParameters(call.Real(3), false);
        const std::size_t n = SizeOf(call, 0, set);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        const double P = routines::PascalFromBar(call.Real(1));
        std::vector<double>& z = Scratch(n, 0);
        std::vector<double>& terms = Scratch(n, 1);
        const double sum = routines::Normalised(entry, "PENTH_MOL_VAPL", "mole fractions", call.Array(2), n, z.data());
        double cp = 0.0;
        const double dhdP = set.dh_dP * thermo::kGJPerKmolPerJPerMol;
        *call.Output(0) = LocalEnthalpy(set, T, z, terms, cp) + dhdP * (P - set.P);
        if (!call.WantsDerivatives()) return;
        double* row = call.DerivativeRow(0);
        row[0] = cp;
        row[1] = dhdP * thermo::kPascalPerBar;
        routines::ProjectOnFractions(terms.data(), z.data(), sum, n, 1.0, row + 2);
        row[n + 2] = 0.0;
    });
}

// PDENS_MOL_VAPL (T, P, id) -> vapour density, kmol/m3.
ZX_DENSE_ROUTINE(RX55IF_qelpvmx) {
    routines::Guarded(call, "RX55IF_qelpvmx", "PDENS_MOL_VAPL", [&] {
        const LocalParameters& set = routines::FindLocalParameters(call.Real(2), false);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        const double P = routines::PascalFromBar(call.Real(1));
        const double rho = 1e-3 * P / (set.z_factor * thermo::kGasConstant * T);
        *call.Output(0) = rho;
        if (!call.WantsDerivatives()) return;
        double* row = call.DerivativeRow(0);
        row[0] = -rho / T;
        row[1] = rho / call.Real(1);
        row[2] = 0.0;
    });
}
