// Property routines of the "Morvanex" routine library: pure-component molar enthalpies and the
// critical temperature and pressure, for the calling model's component list.
#include <algorithm>

#include <fmt/format.h>

#include "dense_call.hpp"
#include "list_context.hpp"
#include "phase_property.hpp"
#include "property_services.hpp"
#include "routine_guard.hpp"
#include "thermo/units.hpp"

using zx::routines::DenseCall;
using zx::routines::ListContext;
using zx::routines::RoutineError;
namespace thermo = zx::thermo;
namespace routines = zx::routines;

namespace {

// Component `index` (1..n) or the mole-fraction average (index 0) of a critical constant.
void Critical(const DenseCall& call, const char* entry, const char* routine, bool temperature) {
    routines::Guarded(call, entry, routine, [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = routines::CompositionSize(call, 0, c);
        const int index = call.Integer(1);
        if (index < 0 || index > static_cast<int>(n))
            throw RoutineError(fmt::format("component index {} is not 0 (the mixture) or 1 to {}", index, n));
        routines::Normalised(entry, routine, "mole fractions", call.Array(0), n, c.z.data());
        double value = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            if (index != 0 && static_cast<int>(i) != index - 1) continue;
            const thermo::Component& comp = *c.Mixture().components[i];
            const auto& v = temperature ? comp.critical_temperature : comp.critical_pressure;
            if (!v) throw RoutineError(fmt::format("no critical {} for component {} in the component database", temperature ? "temperature" : "pressure", comp.id));
            value += (index == 0 ? c.z[i] : 1.0) * *v;
        }
        *call.Output(0) = temperature ? value - thermo::kCelsiusOffset : value / thermo::kPascalPerBar;
    });
}

}  // namespace

// PENTH_MOLAR (T, P, phase 0 liquid / 1 vapour) -> each component's pure molar enthalpy, GJ/kmol.
ZX_DENSE_ROUTINE(RX55IF_spenth_molar) {
    const char* entry = "RX55IF_spenth_molar";
    routines::Guarded(call, entry, "PENTH_MOLAR", [&] {
        ListContext& c = routines::ContextFor(call);
        const std::size_t n = c.Size();
        routines::RequireOutputPerComponent(call, c);
        const double T = routines::KelvinFromCelsius(call.Real(0));
        const double P = routines::PascalFromBar(call.Real(1));
        const int phase = call.Integer(2);
        if (phase != 0 && phase != 1) throw RoutineError(fmt::format("phase {} is not 0 (liquid) or 1 (vapour)", phase));
        c.first.ClearNotes();
        c.second.ClearNotes();
        for (std::size_t i = 0; i < n; ++i) {
            std::fill(c.z2.begin(), c.z2.end(), 0.0);
            c.z2[i] = 1.0;
            c.model->Evaluate(phase == 0 ? thermo::Phase::Liquid : thermo::Phase::Vapour, T, P, c.z2.data(), thermo::kEnthalpy, c.second);
            call.Output(0)[i] = c.second.h * thermo::kGJPerKmolPerJPerMol;
            for (std::size_t k = 0; k < n; ++k) c.first.notes[k] |= c.second.notes[k];
            c.second.ClearNotes();
        }
        routines::NoteRanges(entry, "PENTH_MOLAR", c.Mixture(), c.first.notes.data());
    });
}

ZX_DENSE_ROUTINE(RX55IF_GPICRT) { Critical(call, "RX55IF_GPICRT", "PCRIT_TEMP", true); }
ZX_DENSE_ROUTINE(RX55IF_GPICRP) { Critical(call, "RX55IF_GPICRP", "PCRIT_PRESS", false); }

// The "Morvanex" library's common entry hands the runtime's services on to the property code.
extern "C" void zx_routine_library_attached(const zorexp_host_services* services) { zx::routines::AttachServices(services); }
