#include "thermo/ideal_model.hpp"

#include <algorithm>
#include <cmath>

#include "thermo/units.hpp"

namespace zx::thermo {

IdealModel::IdealModel(Mixture mixture) : PropertyModel(std::move(mixture)), hv_(Size()), ps_(Size()) {}

void IdealModel::Evaluate(Phase phase, double T, double P, const double* z, unsigned request, PhaseProperties& out) {
    CheckState(T, P);
    const bool liquid = phase == Phase::Liquid;
    if (request & kEnthalpy) Require(kDataIdealGas | (liquid ? kDataHeatOfVaporisation : 0u), liquid ? "liquid enthalpy" : "vapour enthalpy");
    if (request & kHeatCapacity) Require(kDataIdealGas | (liquid ? kDataHeatOfVaporisation : 0u), liquid ? "liquid heat capacity" : "vapour heat capacity");
    if (request & kEntropy)
        Require(kDataIdealGas | kDataFormationGibbs | (liquid ? kDataHeatOfVaporisation | kDataVapourPressure : 0u),
                liquid ? "liquid entropy" : "vapour entropy");
    if (liquid && (request & kVolume)) Require(kDataLiquidVolume, "liquid density");
    if (liquid && (request & kFugacity)) Require(kDataVapourPressure, "liquid fugacity coefficients");
    if (liquid) return Liquid(T, P, z, request, out);

    const std::size_t n = Size();
    const bool gradients = request & kGradients;
    if (request & (kEnthalpy | kEntropy | kHeatCapacity)) IdealGasMixture(T, P, z, request, out);
    if (request & kVolume) {
        out.v = kGasConstant * T / P;
        out.dv.dT = kGasConstant / P;
        out.dv.dP = -out.v / P;
        if (gradients) std::fill(out.dv.dz.begin(), out.dv.dz.end(), 0.0);
    }
    if (request & kFugacity) {
        std::fill(out.ln_phi.begin(), out.ln_phi.end(), 0.0);
        if (gradients) std::fill(out.d_ln_phi.begin(), out.d_ln_phi.begin() + n * (n + 2), 0.0);
    }
}

void IdealModel::Liquid(double T, double P, const double* z, unsigned request, PhaseProperties& out) {
    const std::size_t n = Size();
    const double R = kGasConstant;
    const bool gradients = request & kGradients;
    const auto& comps = GetMixture().components;
    if (request & (kEntropy | kFugacity)) {
        for (std::size_t i = 0; i < n; ++i) {
            ps_[i] = comps[i]->vapour_pressure->At(T);
            if (ps_[i].outside) out.notes[i] |= kNoteVapourPressure;
        }
    }
    if (request & (kEnthalpy | kEntropy | kHeatCapacity)) {
        IdealGasMixture(T, P, z, request, out);
        double h = 0.0, cp = 0.0, dcp = 0.0, s = 0.0, ds = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            hv_[i] = comps[i]->heat_of_vaporisation->At(T);
            if (hv_[i].outside) out.notes[i] |= kNoteHeatOfVaporisation;
            const IdealGasState& g = ig_[i];
            const CorrelationValues& hv = hv_[i];
            h += z[i] * (g.h - hv.value);
            cp += z[i] * (g.cp - hv.d1);
            dcp += z[i] * (g.dcp - hv.d2);
            if (request & kEntropy) {
                const double sl = g.s - R * (ps_[i].ln_p - std::log(kReferencePressure)) - hv.value / T;
                s += z[i] * (sl - R * SafeLog(z[i]));
                ds += z[i] * (g.cp / T - R * ps_[i].dln_p - hv.d1 / T + hv.value / (T * T));
                if (gradients) out.ds.dz[i] = sl - R * (SafeLog(z[i]) + 1.0);
            }
            if (gradients) {
                out.dh.dz[i] = g.h - hv.value;
                out.dcp.dz[i] = out.dcv.dz[i] = g.cp - hv.d1;
            }
        }
        out.h = h;
        out.cp = out.cv = cp;
        out.s = s;
        out.dh.dT = cp;
        out.dcp.dT = out.dcv.dT = dcp;
        out.ds.dT = ds;
        out.dh.dP = out.dcp.dP = out.dcv.dP = out.ds.dP = 0.0;
    }
    if (request & kVolume) LiquidVolume(T, z, gradients, out);
    if (request & kFugacity) {
        for (std::size_t i = 0; i < n; ++i) {
            out.ln_phi[i] = ps_[i].ln_p - std::log(P);
            if (!gradients) continue;
            double* row = &out.d_ln_phi[i * (n + 2)];
            std::fill(row, row + n + 2, 0.0);
            row[0] = ps_[i].dln_p;
            row[1] = -1.0 / P;
        }
    }
}

}  // namespace zx::thermo
