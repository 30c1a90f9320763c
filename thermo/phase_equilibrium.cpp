#include "thermo/phase_equilibrium.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "thermo/units.hpp"

namespace zx::thermo {

PhaseEquilibrium::PhaseEquilibrium(PropertyModel& model) : model_(model), k_(model.Size()), notes_(model.Size()) {
    liquid_.Resize(model.Size());
    vapour_.Resize(model.Size());
}

double PhaseEquilibrium::BubbleTemperature(double P, const double* x, std::vector<double>& incipient) { return Solve(true, P, x, incipient); }

double PhaseEquilibrium::DewTemperature(double P, const double* y, std::vector<double>& incipient) { return Solve(false, P, y, incipient); }

// Wilson's K-value estimate of the temperature and the incipient phase where critical data
// exist, else a normal-boiling-point average and the feed.
double PhaseEquilibrium::InitialTemperature(bool bubble, double P, const double* feed, std::vector<double>& incipient) const {
    const Mixture& m = model_.GetMixture();
    const std::size_t n = m.Size();
    bool wilson = true;
    for (const Component* c : m.components) wilson = wilson && c->critical_temperature && c->critical_pressure && c->acentric_factor;
    incipient.assign(feed, feed + n);
    if (!wilson) {
        double t = 0.0;
        for (std::size_t i = 0; i < n; ++i) t += feed[i] * m.components[i]->normal_boiling_point.value_or(300.0);
        return t;
    }
    double beta = 0.0;
    for (std::size_t i = 0; i < n; ++i) beta += feed[i] / *m.components[i]->critical_temperature;
    beta *= 1.4;  // about the normal boiling point
    for (int it = 0; it < 50; ++it) {
        double s = 0.0, ds = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            const Component& c = *m.components[i];
            const double e = 5.373 * (1.0 + *c.acentric_factor);
            const double lnk = std::log(*c.critical_pressure / P) + e * (1.0 - *c.critical_temperature * beta);
            const double sign = bubble ? 1.0 : -1.0;
            const double term = feed[i] * std::exp(std::clamp(sign * lnk, -700.0, 700.0));
            s += term;
            ds += term * sign * (-e * *c.critical_temperature);
        }
        const double step = std::clamp(std::log(s) / (ds / s), -0.3 * beta, 0.3 * beta);
        beta -= step;
        if (std::abs(step) < 1e-10 * beta) break;
    }
    // The incipient phase as the estimate gives it.
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const Component& c = *m.components[i];
        const double lnk = std::log(*c.critical_pressure / P) + 5.373 * (1.0 + *c.acentric_factor) * (1.0 - *c.critical_temperature * beta);
        sum += incipient[i] = feed[i] * std::exp(std::clamp(bubble ? lnk : -lnk, -700.0, 700.0));
    }
    for (double& v : incipient) v /= sum;
    return 1.0 / beta;
}

double PhaseEquilibrium::Solve(bool bubble, double P, const double* feed, std::vector<double>& incipient) {
    const std::size_t n = model_.Size();
    std::fill(notes_.begin(), notes_.end(), 0);
    double T = InitialTemperature(bubble, P, feed, incipient);
    if (!(T > 0.0) || !std::isfinite(T)) T = 300.0;
    bool first = true;
    const unsigned request = kFugacity | kGradients;
    for (int it = 0; it < 200; ++it) {
        liquid_.ClearNotes();
        vapour_.ClearNotes();
        const double* x = bubble ? feed : incipient.data();
        const double* y = bubble ? incipient.data() : feed;
        model_.Evaluate(Phase::Liquid, T, P, x, request, liquid_);
        model_.Evaluate(Phase::Vapour, T, P, y, request, vapour_);
        for (std::size_t i = 0; i < n; ++i) notes_[i] |= liquid_.notes[i] | vapour_.notes[i];
        // Both phases on one root with one composition: the trivial solution, no two phases here.
        double apart = 0.0;
        for (std::size_t i = 0; i < n; ++i) apart = std::max(apart, std::abs(incipient[i] - feed[i]));
        if (apart < 1e-6 && liquid_.compressibility > 0.0 &&
            std::abs(liquid_.compressibility - vapour_.compressibility) < 1e-9 * vapour_.compressibility)
            throw PropertyError(fmt::format("{} point at {} bar: liquid and vapour fall on the same root of the equation of state (the mixture is above its critical point there)",
                                            bubble ? "bubble" : "dew", P / kPascalPerBar));
        double s = 0.0, ds = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            const double lnk = liquid_.ln_phi[i] - vapour_.ln_phi[i];
            const double dlnk = liquid_.d_ln_phi[i * (n + 2)] - vapour_.d_ln_phi[i * (n + 2)];
            const double term = feed[i] * std::exp(std::clamp(bubble ? lnk : -lnk, -700.0, 700.0));
            k_[i] = term;
            s += term;
            ds += term * (bubble ? dlnk : -dlnk);
        }
        double change = 0.0;
        for (std::size_t i = 0; i < n; ++i) {
            const double value = k_[i] / s;
            change = std::max(change, std::abs(value - incipient[i]));
            incipient[i] = value;
        }
        const double g = std::log(s), dgdT = ds / s;
        // Newton in 1/T, steps limited to 20 %.
        const double beta = 1.0 / T;
        const double dbeta = std::clamp(g / (-T * T * dgdT), -0.2 * beta, 0.2 * beta);
        if (!std::isfinite(dbeta) || dgdT == 0.0) break;
        T = 1.0 / (beta - dbeta);
        if (!first && std::abs(g) < 1e-11 && change < 1e-10) return T;
        first = false;
    }
    throw PropertyError(fmt::format("the {} temperature at {} bar did not converge", bubble ? "bubble" : "dew", P / kPascalPerBar));
}

}  // namespace zx::thermo
