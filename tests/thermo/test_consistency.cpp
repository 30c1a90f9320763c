// Thermodynamic identities that tie the methods' outputs together, checked by finite differences
// of the library's own values, and the database's normal boiling points reproduced from its
// vapour-pressure correlations and from Peng-Robinson.
#include <cmath>

#include <gtest/gtest.h>

#include "thermo/phase_equilibrium.hpp"
#include "thermo/property_model.hpp"
#include "thermo/units.hpp"

namespace {

using namespace zx::thermo;

const ComponentDatabase& Db() {
    static const ComponentDatabase db = ComponentDatabase::Load(std::string(ZX_SOURCE_DIR) + "/thermo/data/components.json");
    return db;
}

struct State {
    const char* name;
    std::vector<std::string> ids;
    std::vector<double> z;
    double T, P;  // K, Pa
    bool liquid;  // a state where a liquid makes sense (no supercritical component)
};
const State kStates[] = {
    {"LightGasAt20Bar", {"METHANE", "ETHANE", "PROPANE", "N2"}, {0.7, 0.15, 0.1, 0.05}, 280.0, 20e5, false},
    {"DenseSupercriticalGas", {"H2", "N2", "METHANE", "CO2"}, {0.4, 0.2, 0.3, 0.1}, 450.0, 80e5, false},
    {"AromaticLiquid", {"BENZENE", "TOLUENE", "ETHYLBENZENE"}, {0.4, 0.4, 0.2}, 360.0, 1.2e5, true},
    {"AlcoholWater", {"METHANOL", "ETHANOL", "WATER"}, {0.3, 0.2, 0.5}, 340.0, 1.0e5, true},
};

struct Evaluator {
    std::unique_ptr<PropertyModel> model;
    PhaseProperties p;
    Evaluator(const State& s, Method m) : model(PropertyModel::Create(MakeMixture(Db(), s.ids, m))) { p.Resize(s.ids.size()); }
    const PhaseProperties& At(Phase phase, double T, double P, const std::vector<double>& z, unsigned request) {
        model->Evaluate(phase, T, P, z.data(), request, p);
        return p;
    }
};

struct Combination {
    State state;
    Method method;
    Phase phase;
    std::string Name() const { return std::string(state.name) + MethodName(method)[0] + (phase == Phase::Liquid ? "Liquid" : "Vapour"); }
};
void PrintTo(const Combination& c, std::ostream* os) { *os << c.Name(); }

// Every state, method and phase, but liquids only where a liquid makes sense.
std::vector<Combination> Combinations(bool liquids) {
    std::vector<Combination> out;
    for (const State& s : kStates)
        for (Method m : {Method::Ideal, Method::PengRobinson}) {
            out.push_back({s, m, Phase::Vapour});
            if (liquids && s.liquid) out.push_back({s, m, Phase::Liquid});
        }
    return out;
}

class Identities : public ::testing::TestWithParam<Combination> {};
class VapourIdentities : public ::testing::TestWithParam<Combination> {};

// cp = dh/dT; Gibbs-Helmholtz d(g/T)/dT = -h/T^2 with g = h - T s; ds/dT = cp/T.
TEST_P(Identities, HeatCapacityAndGibbsHelmholtz) {
    const auto& [s, method, phase] = GetParam();
    Evaluator e(s, method);
    const unsigned all = kEnthalpy | kEntropy | kHeatCapacity;
    const double dT = 1e-3;
    const PhaseProperties mid = e.At(phase, s.T, s.P, s.z, all);
    const PhaseProperties up = e.At(phase, s.T + dT, s.P, s.z, all);
    const PhaseProperties down = e.At(phase, s.T - dT, s.P, s.z, all);
    EXPECT_NEAR((up.h - down.h) / (2 * dT), mid.cp, 1e-5 * mid.cp);
    const auto gOverT = [](const PhaseProperties& p, double T) { return (p.h - T * p.s) / T; };
    const double gibbsHelmholtz = (gOverT(up, s.T + dT) - gOverT(down, s.T - dT)) / (2 * dT) * s.T * s.T;
    // The ideal liquid's Watson heat of vaporisation and its vapour-pressure slope are separate
    // correlations: they agree (Clausius-Clapeyron) only to about 10 % of the heat of vaporisation.
    const bool idealLiquid = method == Method::Ideal && phase == Phase::Liquid;
    EXPECT_NEAR(gibbsHelmholtz, -mid.h, idealLiquid ? 5000.0 : 1e-3) << "J/mol";
    if (!idealLiquid) {
        EXPECT_NEAR((up.s - down.s) / (2 * dT), mid.cp / s.T, 1e-6 * mid.cp);
    }
}

// sum z_i ln phi_i is the residual Gibbs energy over RT: (g - g_ideal gas)/RT at the same T, P, z.
TEST_P(Identities, FugacityCoefficientsSumToResidualGibbsEnergy) {
    const auto& [s, method, phase] = GetParam();
    Evaluator e(s, method), ideal(s, Method::Ideal);
    const PhaseProperties& p = e.At(phase, s.T, s.P, s.z, kEnthalpy | kEntropy | kFugacity);
    const PhaseProperties& ig = ideal.At(Phase::Vapour, s.T, s.P, s.z, kEnthalpy | kEntropy);
    double sum = 0.0;
    for (std::size_t i = 0; i < s.z.size(); ++i) sum += s.z[i] * p.ln_phi[i];
    const double gR = (p.h - ig.h) - s.T * (p.s - ig.s);
    EXPECT_NEAR(sum, gR / (kGasConstant * s.T), 1e-9);
}

// cv from the equation of state against cp - T v alpha^2 / kappa, with alpha and kappa from
// finite differences of the vapour volume (liquid volumes come from the saturated-liquid
// correlation, not the equation of state).
TEST_P(VapourIdentities, IsochoricHeatCapacityFromTheVolume) {
    const auto& [s, method, phase] = GetParam();
    Evaluator e(s, method);
    const PhaseProperties mid = e.At(phase, s.T, s.P, s.z, kHeatCapacity | kVolume);
    const double dT = 1e-3, dP = 1.0;
    const double dvdT = (e.At(phase, s.T + dT, s.P, s.z, kVolume).v - e.At(phase, s.T - dT, s.P, s.z, kVolume).v) / (2 * dT);
    const double dvdP = (e.At(phase, s.T, s.P + dP, s.z, kVolume).v - e.At(phase, s.T, s.P - dP, s.z, kVolume).v) / (2 * dP);
    EXPECT_NEAR(mid.cv, mid.cp + s.T * dvdT * dvdT / dvdP, 1e-5 * mid.cp);
}

INSTANTIATE_TEST_SUITE_P(Methods, Identities, ::testing::ValuesIn(Combinations(true)), [](const auto& info) { return info.param.Name(); });
INSTANTIATE_TEST_SUITE_P(Methods, VapourIdentities, ::testing::ValuesIn(Combinations(false)), [](const auto& info) { return info.param.Name(); });

// At the bubble point sum K_i x_i = 1, at the dew point sum y_i / K_i = 1, and the bubble point
// lies below the dew point.
TEST(PhaseEquilibrium, BubbleAndDewPointsSatisfyTheirConditions) {
    for (Method method : {Method::Ideal, Method::PengRobinson}) {
        const std::vector<double> z{0.25, 0.35, 0.4};
        auto model = PropertyModel::Create(MakeMixture(Db(), {"N-PENTANE", "N-HEXANE", "N-HEPTANE"}, method));
        PhaseEquilibrium eq(*model);
        PhaseProperties liquid, vapour;
        liquid.Resize(3);
        vapour.Resize(3);
        std::vector<double> other;
        const double P = 3e5;
        const double tb = eq.BubbleTemperature(P, z.data(), other);
        model->Evaluate(Phase::Liquid, tb, P, z.data(), kFugacity, liquid);
        model->Evaluate(Phase::Vapour, tb, P, other.data(), kFugacity, vapour);
        double sum = 0.0;
        for (int i = 0; i < 3; ++i) sum += z[i] * std::exp(liquid.ln_phi[i] - vapour.ln_phi[i]);
        EXPECT_NEAR(sum, 1.0, 1e-9) << MethodName(method);
        const double td = eq.DewTemperature(P, z.data(), other);
        model->Evaluate(Phase::Liquid, td, P, other.data(), kFugacity, liquid);
        model->Evaluate(Phase::Vapour, td, P, z.data(), kFugacity, vapour);
        sum = 0.0;
        for (int i = 0; i < 3; ++i) sum += z[i] / std::exp(liquid.ln_phi[i] - vapour.ln_phi[i]);
        EXPECT_NEAR(sum, 1.0, 1e-9) << MethodName(method);
        EXPECT_LT(tb + 5.0, td) << MethodName(method);
    }
}

// Every component's normal boiling point from its vapour-pressure correlation (Antoine fits to
// 0.2 K, the tables rounding to 0.1 K; the Lee-Kesler estimate to 1.2 K) and from Peng-Robinson (1.5 K) against the database.
TEST(NormalBoilingPoints, ReproducedByVapourPressureAndPengRobinson) {
    int checked = 0;
    for (const Component& c : Db().Components()) {
        if (!c.normal_boiling_point) continue;
        const double tb = *c.normal_boiling_point;
        for (Method method : {Method::Ideal, Method::PengRobinson}) {
            if (method == Method::PengRobinson && !c.acentric_factor) continue;
            auto model = PropertyModel::Create(MakeMixture(Db(), {c.id}, method));
            PhaseEquilibrium eq(*model);
            std::vector<double> y;
            const double x[1] = {1.0};
            const double t = eq.BubbleTemperature(kAtmosphere, x, y);
            const bool antoine = c.vapour_pressure->form == VapourPressure::Form::Antoine;
            const double tolerance = method == Method::PengRobinson ? 1.5 : antoine ? 0.2 : 1.2;
            EXPECT_NEAR(t, tb, tolerance) << c.id << " " << MethodName(method);
            ++checked;
        }
    }
    EXPECT_GE(checked, 80);
}

// The reference state: at 25 C an ideal gas has its formation enthalpy, and h - T s at 1 bar
// its formation Gibbs energy.
TEST(ReferenceState, IdealGasAtTwentyFiveCelsiusHasItsFormationValues) {
    for (const Component& c : Db().Components()) {
        if (!c.ideal_gas_cp || !c.formation_enthalpy || !c.formation_gibbs_energy) continue;
        const IdealGasState g = PureIdealGas(c, kReferenceTemperature);
        EXPECT_DOUBLE_EQ(g.h, *c.formation_enthalpy) << c.id;
        EXPECT_NEAR(g.h - kReferenceTemperature * g.s, *c.formation_gibbs_energy, 1e-9 * std::abs(g.h) + 1e-9) << c.id;
    }
}

}  // namespace
