// Sweeps over the example flowsheets: the switch to choked flow and the flux that stops
// rising, a negative pressure drop limited to zero, the selector's output across signal
// numbers, points that fail without ending the sweep, and paths that cannot be varied.
#include "flowsheet_test_support.hpp"

#include <cmath>

#include "flowsheet/input_error.hpp"
#include "flowsheet/sweep.hpp"

namespace zx::flowsheet {
namespace {

std::string Example(const std::string& name) {
    std::ifstream in(std::string(ZX_EXAMPLES_DIR) + "/" + name + ".json");
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

struct Swept {
    testing::SetUpSheet sheet;
    std::unique_ptr<SweepEngine> engine;
    std::vector<SweepPoint> points;
    std::vector<int> progress;

    Swept(const std::string& example, const std::string& vary) : sheet(Example(example)) {
        engine = std::make_unique<SweepEngine>(*sheet.system, ParseSweepRange(vary));
        points = engine->Run(zx::solve::SolverOptions{}, [&](int k, const SweepPoint&) { progress.push_back(k); });
    }
    double At(int point, const std::string& name) const {
        const auto& names = engine->Names();
        const auto it = std::find(names.begin(), names.end(), name);
        EXPECT_NE(it, names.end()) << name;
        return it == names.end() ? NAN : points[static_cast<std::size_t>(point)].values[static_cast<std::size_t>(it - names.begin())];
    }
};

TEST(Sweep, VapourValveChokesBelowTheCriticalRatioAndItsFluxStopsRising) {
    const Swept s("vapour_relief_valve", "V1.ETA=0.2:0.9:14");
    ASSERT_EQ(s.points.size(), 15u);
    int choked = 0;
    for (int k = 0; k < 15; ++k) {
        const SweepPoint& p = s.points[static_cast<std::size_t>(k)];
        ASSERT_TRUE(p.converged) << p.value << ": " << p.failure;
        const bool below = p.value <= s.At(k, "V1.ETA_CRIT");
        EXPECT_EQ(s.At(k, "V1.CRITICAL_FLOW"), below ? 1.0 : 0.0) << p.value;
        choked += below;
        if (k == 0) continue;
        const double flux = s.At(k, "V1.FLUX"), before = s.At(k - 1, "V1.FLUX");
        if (below) EXPECT_NEAR(flux, before, 1e-9 * flux) << p.value;   // choked: no longer changes with ETA
        else EXPECT_LT(flux, before) << p.value;                       // subcritical: falls as the outlet pressure rises
    }
    EXPECT_EQ(choked, 7);   // 0.2 ... 0.5 against a critical ratio of about 0.53
    EXPECT_NEAR(s.At(0, "V1.ETA_CRIT"), 0.528, 0.002);
}

TEST(Sweep, LiquidValveGivesNoFlowForANegativeDrop) {
    const Swept s("liquid_relief_valve", "V1.P_DROP=-1:5:6");
    ASSERT_EQ(s.points.size(), 7u);
    for (int k = 0; k < 7; ++k) ASSERT_TRUE(s.points[static_cast<std::size_t>(k)].converged) << k;
    EXPECT_EQ(s.At(0, "V1.PDROPC"), 0.0);
    EXPECT_NEAR(s.At(0, "V1.FLUX"), 0.0, 1e-6);
    EXPECT_NEAR(s.At(1, "V1.FLUX"), 0.0, 1e-6);
    // FLUX (FLUX + EPS) grows with the drop: four times the drop, twice the flux (nearly).
    EXPECT_NEAR(s.At(5, "V1.FLUX") / s.At(2, "V1.FLUX"), 2.0, 1e-6);
}

TEST(Sweep, SelectorPassesEachInputNearItsNumberAndZeroBetween) {
    const Swept s("signal_selector", "SEL.SELSIG=0.5:3.5:30");
    ASSERT_EQ(s.points.size(), 31u);
    for (int k = 0; k <= 30; ++k) {
        const SweepPoint& p = s.points[static_cast<std::size_t>(k)];
        ASSERT_TRUE(p.converged) << p.value << ": " << p.failure;
        double expected = 0.0;
        for (int i = 1; i <= 3; ++i)
            if (std::fabs(i - p.value) < 0.4) expected = 10.0 * i;
        EXPECT_DOUBLE_EQ(s.At(k, "SEL.OUTPUT_"), expected) << p.value;
    }
}

TEST(Sweep, APointThatFailsIsReportedAndTheSweepGoesOn) {
    // Below absolute zero the heat-capacity routine fails; the points after it solve.
    Swept s("vapour_relief_valve", "V1.T=-400:50:3");
    ASSERT_EQ(s.points.size(), 4u);
    EXPECT_FALSE(s.points[0].converged);
    EXPECT_NE(s.points[0].failure.find("PCP_MOL_VAP"), std::string::npos) << s.points[0].failure;
    for (int k = 1; k < 4; ++k) EXPECT_TRUE(s.points[static_cast<std::size_t>(k)].converged) << s.points[static_cast<std::size_t>(k)].failure;
    EXPECT_EQ(s.progress, (std::vector<int>{0, 1, 2, 3}));
    // Each point starts from the last converged one: the last repeats the example's solve.
    EXPECT_NEAR(s.At(3, "V1.FLUX"), 2101.0506, 1e-3);
}

TEST(Sweep, CasesOfSeveralPropertiesGiveTheSameSolutionFromEitherStart) {
    testing::SetUpSheet sheet(Example("vapour_relief_valve"));
    SweepEngine engine(*sheet.system, {"V1.ETA", "v1.area_ratio"}, "sweep");
    const auto& names = engine.Names();
    const auto flux = static_cast<std::size_t>(std::find(names.begin(), names.end(), "V1.FLUX") - names.begin());
    const zx::solve::SolverOptions options;
    const SweepPoint a = engine.SolveCase({0.3, 0.2}, options);
    const SweepPoint warm = engine.SolveCase({0.7, 0.1}, options);
    const std::vector<double> solved = engine.LastConverged();
    const SweepPoint cold = engine.SolveCase({0.7, 0.1}, options, SweepEngine::Start::Initial);
    ASSERT_TRUE(a.converged && warm.converged && cold.converged) << a.failure << warm.failure << cold.failure;
    // Equal within what the solver's tolerance leaves between different starts.
    EXPECT_NEAR(warm.values[flux], cold.values[flux], 1e-6 * cold.values[flux]);
    engine.SetStart(solved);
    EXPECT_NEAR(engine.SolveCase({0.3, 0.2}, options).values[flux], a.values[flux], 1e-6 * a.values[flux]);
    EXPECT_LT(cold.values[flux], a.values[flux]);   // half the area, a higher outlet pressure
    try {
        SweepEngine refused(*sheet.system, {"V1.ETA", "V1.FLUX"}, "sweep");
        FAIL() << "a free variable was accepted";
    } catch (const InputError& e) {
        EXPECT_EQ(e.Location(), "sweep");
        EXPECT_NE(std::string(e.what()).find("V1.FLUX"), std::string::npos);
    }
}

TEST(Sweep, OnlyAFixedVariableOrRealParameterOfABlockCanBeVaried) {
    testing::SetUpSheet sheet(Example("vapour_relief_valve"));
    auto refusal = [&](const std::string& vary) {
        try {
            SweepEngine engine(*sheet.system, ParseSweepRange(vary));
        } catch (const InputError& e) {
            return e.Location() + ": " + e.what();
        }
        return std::string("no error");
    };
    EXPECT_EQ(refusal("V1.FLUX=0:1:2"),
              "--vary: sweep path \"V1.FLUX\": FLUX of block V1 (PSV_VAP) is a free variable; a sweep varies a fixed "
              "variable or a real parameter");
    EXPECT_NE(refusal("V2.ETA=0:1:2").find("the flowsheet has no block V2"), std::string::npos);
    EXPECT_NE(refusal("V1.ETB=0:1:2").find("block V1 (PSV_VAP): "), std::string::npos);
    EXPECT_NE(refusal("ETA=0:1:2").find("is not BLOCK.PROPERTY"), std::string::npos);
    EXPECT_NE(refusal("V1.ETA=0:1").find("the range is START:STOP:STEPS"), std::string::npos);
    EXPECT_NE(refusal("V1.ETA=0:x:2").find("the stop \"x\" is not a number"), std::string::npos);
    EXPECT_NE(refusal("V1.ETA=0:1:-2").find("the steps \"-2\""), std::string::npos);
    EXPECT_EQ(ParseSweepRange("V1.ETA=0.5:0.5:0").Points(), 1);
}

}  // namespace
}  // namespace zx::flowsheet
