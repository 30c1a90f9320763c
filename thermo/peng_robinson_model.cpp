#include "thermo/peng_robinson_model.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <fmt/format.h>

#include "thermo/cubic_roots.hpp"
#include "thermo/dual.hpp"
#include "thermo/units.hpp"

namespace zx::thermo {
namespace {

constexpr double kSqrt2 = std::numbers::sqrt2;
constexpr double kTwoSqrt2 = 2.0 * std::numbers::sqrt2;

// Departure functions of the mixture as functions of T, P, a, da/dT, d2a/dT2 and b, with the
// compressibility Z0 already found. Written once for doubles and for dual numbers over those six
// quantities (index order below), which gives their exact partial derivatives.
enum : int { kT, kP, kA, kAT, kATT, kB, kMixtureQuantities };
using D6 = Dual<kMixtureQuantities>;

template <class S>
struct Departure {
    S Z, h, s, cp, cv, v;
    S U, V, W;  // ln phi_i = U + V b_i + W sum_j z_j a_ij
};

template <class S>
Departure<S> Departures(const S& T, const S& P, const S& a, const S& aT, const S& aTT, const S& b, double Z0) {
    using std::log;
    const double R = kGasConstant;
    const S RT = R * T;
    const S A = a * P / (RT * RT);
    const S B = b * P / RT;
    // One Newton step from the root carries the root's derivatives (implicit function theorem).
    const S c1 = A - 3.0 * B * B - 2.0 * B;
    const S f = ((Z0 + (B - 1.0)) * Z0 + c1) * Z0 - (A * B - B * B - B * B * B);
    const S fz = (3.0 * Z0 + 2.0 * (B - 1.0)) * Z0 + c1;
    Departure<S> d;
    d.Z = Z0 - f / fz;
    const S L = log((d.Z + (1.0 + kSqrt2) * B) / (d.Z + (1.0 - kSqrt2) * B));
    d.h = RT * (d.Z - 1.0) + (T * aT - a) / (kTwoSqrt2 * b) * L;
    d.s = R * log(d.Z - B) + aT / (kTwoSqrt2 * b) * L;
    d.v = d.Z * RT / P;
    d.cv = T * aTT / (kTwoSqrt2 * b) * L;
    const S w = d.v * d.v + 2.0 * b * d.v - b * b;
    const S dPdT = R / (d.v - b) - aT / w;
    const S dPdv = -RT / ((d.v - b) * (d.v - b)) + 2.0 * a * (d.v + b) / (w * w);
    d.cp = d.cv - R - T * dPdT * dPdT / dPdv;
    d.U = -log(d.Z - B);
    d.V = (d.Z - 1.0) / b + a * L / (kTwoSqrt2 * b * b * RT);
    d.W = -2.0 * L / (kTwoSqrt2 * b * RT);
    return d;
}

}  // namespace

PengRobinsonModel::PengRobinsonModel(Mixture mixture) : PropertyModel(std::move(mixture)) {
    const std::size_t n = Size();
    const double R = kGasConstant;
    for (const Component* c : GetMixture().components) {
        const bool ok = c->critical_temperature && c->critical_pressure && c->acentric_factor;
        const double tc = ok ? *c->critical_temperature : 1.0, pc = ok ? *c->critical_pressure : 1.0, w = ok ? *c->acentric_factor : 0.0;
        tc_.push_back(tc);
        ac_.push_back(0.45724 * R * R * tc * tc / pc);
        b_.push_back(0.07780 * R * tc / pc);
        kappa_.push_back(0.37464 + 1.54226 * w - 0.26992 * w * w);
    }
    m_.resize(n * n);
    for (std::size_t k = 0; k < n * n; ++k) {
        m_[k] = 1.0 - GetMixture().kij[k];
        no_kij_ = no_kij_ && GetMixture().kij[k] == 0.0;
    }
    for (int k = 0; k < 4; ++k) {
        s_[k].assign(n, 0.0);
        r_[k].assign(n, 0.0);
        q_[k].assign(n, 0.0);
    }
}

void PengRobinsonModel::AlphaTerms(double T) {
    for (std::size_t i = 0; i < Size(); ++i) {
        const double sa = std::sqrt(ac_[i]), kappa = kappa_[i], tr = T / tc_[i];
        if (tr <= 1.0) {
            const double u = std::sqrt(tr);
            s_[0][i] = sa * (1.0 + kappa * (1.0 - u));
            s_[1][i] = -sa * kappa * u / (2.0 * T);
            s_[2][i] = sa * kappa * u / (4.0 * T * T);
            s_[3][i] = -3.0 * sa * kappa * u / (8.0 * T * T * T);
        } else {
            const double d = 1.0 + kappa / 2.0, c = 1.0 - 1.0 / d, trd = std::pow(tr, d);
            const double g1 = -c * d * trd / T, g2 = -c * d * (d - 1.0) * trd / (T * T);
            const double g3 = -c * d * (d - 1.0) * (d - 2.0) * trd / (T * T * T);
            const double e = sa * std::exp(c * (1.0 - trd));
            s_[0][i] = e;
            s_[1][i] = e * g1;
            s_[2][i] = e * (g1 * g1 + g2);
            s_[3][i] = e * (g1 * g1 * g1 + 3.0 * g1 * g2 + g3);
        }
    }
}

void PengRobinsonModel::Evaluate(Phase phase, double T, double P, const double* z, unsigned request, PhaseProperties& out) {
    CheckState(T, P);
    const bool liquid = phase == Phase::Liquid;
    const bool gradients = request & kGradients;
    const unsigned thermal = request & (kEnthalpy | kEntropy | kHeatCapacity);
    if (request & kEnthalpy) Require(kDataIdealGas | kDataCritical, liquid ? "liquid enthalpy" : "vapour enthalpy");
    if (request & kHeatCapacity) Require(kDataIdealGas | kDataCritical, liquid ? "liquid heat capacity" : "vapour heat capacity");
    if (request & kEntropy) Require(kDataIdealGas | kDataFormationGibbs | kDataCritical, liquid ? "liquid entropy" : "vapour entropy");
    if (request & kFugacity) Require(kDataCritical, liquid ? "liquid fugacity coefficients" : "vapour fugacity coefficients");
    if (liquid && (request & kVolume)) Require(kDataLiquidVolume, "liquid density");
    if (!liquid && (request & kVolume)) Require(kDataCritical, "vapour density");

    if (thermal) IdealGasMixture(T, P, z, request, out);
    if (liquid && (request & kVolume)) LiquidVolume(T, z, gradients, out);
    const bool eos = thermal || (request & kFugacity) || (!liquid && (request & kVolume));
    if (!eos) return;

    // Mixture a and its temperature derivatives up to the order the request needs.
    int order = (thermal || gradients) ? 1 : 0;
    if (request & kHeatCapacity) order = 2;
    if (gradients && thermal) order += 1;
    const std::size_t n = Size();
    AlphaTerms(T);
    double a[4] = {0.0, 0.0, 0.0, 0.0}, b = 0.0;
    for (int k = 0; k <= order; ++k) {
        if (no_kij_) {
            double sum = 0.0;
            for (std::size_t j = 0; j < n; ++j) sum += z[j] * s_[k][j];
            std::fill(r_[k].begin(), r_[k].end(), sum);
        } else {
            for (std::size_t i = 0; i < n; ++i) {
                double sum = 0.0;
                const double* mi = &m_[i * n];
                for (std::size_t j = 0; j < n; ++j) sum += mi[j] * z[j] * s_[k][j];
                r_[k][i] = sum;
            }
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        const double s0 = s_[0][i], s1 = s_[1][i], s2 = s_[2][i], s3 = s_[3][i];
        const double r0 = r_[0][i], r1 = r_[1][i], r2 = r_[2][i], r3 = r_[3][i];
        q_[0][i] = s0 * r0;
        if (order >= 1) q_[1][i] = s1 * r0 + s0 * r1;
        if (order >= 2) q_[2][i] = s2 * r0 + 2.0 * s1 * r1 + s0 * r2;
        if (order >= 3) q_[3][i] = s3 * r0 + 3.0 * s2 * r1 + 3.0 * s1 * r2 + s0 * r3;
        for (int k = 0; k <= order; ++k) a[k] += z[i] * q_[k][i];
        b += z[i] * b_[i];
    }

    // The root of the phase.
    const double RT = kGasConstant * T, A = a[0] * P / (RT * RT), B = b * P / RT;
    double roots[3];
    const int count = CubicRealRoots(B - 1.0, A - 3.0 * B * B - 2.0 * B, -(A * B - B * B - B * B * B), roots);
    double Z0 = 0.0;
    bool found = false;
    for (int k = 0; k < count; ++k) {
        if (roots[k] <= B) continue;
        if (!found || (liquid ? roots[k] < Z0 : roots[k] > Z0)) Z0 = roots[k];
        found = true;
    }
    if (!found) throw PropertyError(fmt::format("the Peng-Robinson equation has no root above the covolume at {} K and {} bar", T, P / kPascalPerBar));
    const double fz = (3.0 * Z0 + 2.0 * (B - 1.0)) * Z0 + (A - 3.0 * B * B - 2.0 * B);
    if (std::abs(fz) < 1e-12)
        throw PropertyError(fmt::format("the Peng-Robinson root is at the critical point at {} K and {} bar: derivatives are unbounded", T, P / kPascalPerBar));

    out.compressibility = Z0;
    if (!gradients) {
        const Departure<double> d = Departures<double>(T, P, a[0], a[1], a[2], b, Z0);
        if (thermal) {
            out.h += d.h;
            out.s += d.s;
            out.cp += d.cp;
            out.cv += d.cv;
        }
        if (!liquid && (request & kVolume)) out.v = d.v;
        if (request & kFugacity)
            for (std::size_t i = 0; i < n; ++i) out.ln_phi[i] = d.U + d.V * b_[i] + d.W * q_[0][i];
        return;
    }

    const Departure<D6> d = Departures<D6>(D6::Variable(T, kT), D6::Variable(P, kP), D6::Variable(a[0], kA), D6::Variable(a[1], kAT),
                                            D6::Variable(a[2], kATT), D6::Variable(b, kB), Z0);
    // Total derivatives through a(T, z), da/dT(T, z), d2a/dT2(T, z) and b(z).
    const auto dT = [&](const D6& F) { return F.d[kT] + F.d[kA] * a[1] + F.d[kAT] * a[2] + F.d[kATT] * a[3]; };
    const auto dz = [&](const D6& F, std::size_t k) {
        return 2.0 * (F.d[kA] * q_[0][k] + F.d[kAT] * q_[1][k] + F.d[kATT] * q_[2][k]) + F.d[kB] * b_[k];
    };
    const auto add = [&](double& value, Gradient& g, const D6& F) {
        value += F.v;
        g.dT += dT(F);
        g.dP += F.d[kP];
        for (std::size_t k = 0; k < n; ++k) g.dz[k] += dz(F, k);
    };
    if (thermal) {
        add(out.h, out.dh, d.h);
        add(out.s, out.ds, d.s);
        add(out.cp, out.dcp, d.cp);
        add(out.cv, out.dcv, d.cv);
    }
    if (!liquid && (request & kVolume)) {
        out.v = 0.0;
        out.dv.dT = out.dv.dP = 0.0;
        std::fill(out.dv.dz.begin(), out.dv.dz.end(), 0.0);
        add(out.v, out.dv, d.v);
    }
    if (request & kFugacity) {
        const double UT = dT(d.U), VT = dT(d.V), WT = dT(d.W), W = d.W.v;
        for (std::size_t i = 0; i < n; ++i) {
            const double bi = b_[i], qi = q_[0][i];
            out.ln_phi[i] = d.U.v + d.V.v * bi + W * qi;
            double* row = &out.d_ln_phi[i * (n + 2)];
            row[0] = UT + bi * VT + qi * WT + W * q_[1][i];
            row[1] = d.U.d[kP] + bi * d.V.d[kP] + qi * d.W.d[kP];
            const double* mi = &m_[i * n];
            for (std::size_t k = 0; k < n; ++k)
                row[2 + k] = dz(d.U, k) + bi * dz(d.V, k) + qi * dz(d.W, k) + W * mi[k] * s_[0][i] * s_[0][k];
        }
    }
}

}  // namespace zx::thermo
