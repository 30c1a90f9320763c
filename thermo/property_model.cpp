#include "thermo/property_model.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "thermo/ideal_model.hpp"
#include "thermo/peng_robinson_model.hpp"
#include "thermo/units.hpp"

namespace zx::thermo {
namespace {

unsigned DataOf(const Component& c) {
    unsigned has = 0;
    if (c.ideal_gas_cp && c.formation_enthalpy) has |= kDataIdealGas;
    if (c.formation_gibbs_energy) has |= kDataFormationGibbs;
    if (c.vapour_pressure) has |= kDataVapourPressure;
    if (c.heat_of_vaporisation) has |= kDataHeatOfVaporisation;
    if (c.liquid_volume) has |= kDataLiquidVolume;
    if (c.critical_temperature && c.critical_pressure && c.acentric_factor) has |= kDataCritical;
    return has;
}

const char* DataItemName(unsigned item) {
    switch (item) {
        case kDataIdealGas: return "ideal-gas heat capacity or formation enthalpy";
        case kDataFormationGibbs: return "formation Gibbs energy";
        case kDataVapourPressure: return "vapour-pressure correlation";
        case kDataHeatOfVaporisation: return "heat of vaporisation (with normal boiling and critical temperatures)";
        case kDataLiquidVolume: return "saturated-liquid density correlation";
        default: return "critical temperature, critical pressure or acentric factor";
    }
}

}  // namespace

void PhaseProperties::Resize(std::size_t n) {
    for (Gradient* g : {&dh, &ds, &dcp, &dcv, &dv}) g->dz.assign(n, 0.0);
    ln_phi.assign(n, 0.0);
    d_ln_phi.assign(n * (n + 2), 0.0);
    notes.assign(n, 0);
}

void PhaseProperties::ClearNotes() { std::fill(notes.begin(), notes.end(), 0); }

double SafeLog(double z) { return std::log(std::max(z, 1e-30)); }

PropertyModel::PropertyModel(Mixture mixture) : mixture_(std::move(mixture)), ig_(mixture_.Size()) {
    has_all_ = ~0u;
    for (const Component* c : mixture_.components) {
        has_.push_back(DataOf(*c));
        has_all_ &= has_.back();
    }
}

std::unique_ptr<PropertyModel> PropertyModel::Create(Mixture mixture) {
    if (mixture.method == Method::PengRobinson) return std::make_unique<PengRobinsonModel>(std::move(mixture));
    return std::make_unique<IdealModel>(std::move(mixture));
}

void PropertyModel::Require(unsigned items, const char* property) const {
    if ((has_all_ & items) == items) return;
    for (std::size_t i = 0; i < Size(); ++i) {
        const unsigned missing = items & ~has_[i];
        if (missing == 0) continue;
        const unsigned first = missing & (~missing + 1);
        throw PropertyError(fmt::format("no {} for component {} in the component database: the {} needs it", DataItemName(first),
                                        mixture_.Id(i), property));
    }
}

void PropertyModel::CheckState(double T, double P) {
    if (!(T > 0.0) || !std::isfinite(T)) throw PropertyError(fmt::format("temperature {} K is not above absolute zero", T));
    if (!(P > 0.0) || !std::isfinite(P)) throw PropertyError(fmt::format("pressure {} bar is not positive", P / kPascalPerBar));
}

void PropertyModel::IdealGasMixture(double T, double P, const double* z, unsigned request, PhaseProperties& out) {
    const std::size_t n = Size();
    const double R = kGasConstant;
    for (std::size_t i = 0; i < n; ++i) {
        ig_[i] = PureIdealGas(*mixture_.components[i], T);
        if (ig_[i].outside) out.notes[i] |= kNoteHeatCapacity;
    }
    double h = 0.0, s = 0.0, cp = 0.0, dcp = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        h += z[i] * ig_[i].h;
        s += z[i] * (ig_[i].s - R * SafeLog(z[i]));
        cp += z[i] * ig_[i].cp;
        dcp += z[i] * ig_[i].dcp;
    }
    out.h = h;
    out.s = s - R * std::log(P / kReferencePressure);
    out.cp = cp;
    out.cv = cp - R;
    if (!(request & kGradients)) return;
    out.dh.dT = cp;
    out.dh.dP = 0.0;
    out.ds.dT = cp / T;
    out.ds.dP = -R / P;
    out.dcp.dT = out.dcv.dT = dcp;
    out.dcp.dP = out.dcv.dP = 0.0;
    for (std::size_t k = 0; k < n; ++k) {
        out.dh.dz[k] = ig_[k].h;
        out.ds.dz[k] = ig_[k].s - R * (SafeLog(z[k]) + 1.0);
        out.dcp.dz[k] = out.dcv.dz[k] = ig_[k].cp;
    }
}

void PropertyModel::LiquidVolume(double T, const double* z, bool gradients, PhaseProperties& out) {
    double v = 0.0, dv = 0.0;
    for (std::size_t i = 0; i < Size(); ++i) {
        const CorrelationValues vi = mixture_.components[i]->liquid_volume->At(T);
        if (vi.outside) out.notes[i] |= kNoteLiquidVolume;
        v += z[i] * vi.value;
        dv += z[i] * vi.d1;
        if (gradients) out.dv.dz[i] = vi.value;
    }
    out.v = v;
    out.dv.dT = dv;
    out.dv.dP = 0.0;
}

}  // namespace zx::thermo
