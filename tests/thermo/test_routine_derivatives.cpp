// Every analytic derivative a property routine returns agrees with central differences, for
// both methods, liquids and vapours, below and above the components' critical temperatures,
// with and without binary interaction parameters.
#include <gtest/gtest.h>

#include "routine_harness.hpp"
#include "routine_paths.hpp"

namespace {

struct Case {
    const char* name;
    std::vector<std::string> ids;
    std::map<std::string, std::string> options;
    double t, p;  // C, bar
    std::vector<double> x;
};

const Case kCases[] = {
    {"IdealHydrocarbonLiquid", {"BENZENE", "TOLUENE", "CYCLOHEXANE"}, {{"PROPERTY-METHOD", "ideal"}}, 85.0, 1.5, {0.5, 0.3, 0.2}},
    {"IdealGasMixture", {"N2", "O2", "CO2", "WATER"}, {{"PROPERTY-METHOD", "IDEAL"}}, 150.0, 3.0, {0.7, 0.1, 0.1, 0.1}},
    {"PengRobinsonNaturalGas", {"METHANE", "ETHANE", "PROPANE", "N-BUTANE"}, {{"PROPERTY-METHOD", "PENG-ROBINSON"}}, 30.0, 20.0, {0.6, 0.2, 0.12, 0.08}},
    {"PengRobinsonWithKij", {"METHANE", "CO2", "H2S", "N-PENTANE"}, {{"PROPERTY-METHOD", "Peng-Robinson"}, {"PR-KIJ", "METHANE:CO2=0.09; CO2:H2S=0.1"}},
     -20.0, 40.0, {0.3, 0.3, 0.2, 0.2}},
    {"PengRobinsonSupercritical", {"H2", "N2", "METHANE", "N-HEXANE"}, {{"PROPERTY-METHOD", "PENG-ROBINSON"}}, 250.0, 60.0, {0.3, 0.2, 0.3, 0.2}},
    {"PengRobinsonAlcoholLiquid", {"METHANOL", "ETHANOL", "WATER"}, {{"PROPERTY-METHOD", "PENG-ROBINSON"}}, 60.0, 2.0, {0.2, 0.3, 0.5}},
};

struct PhaseRoutine {
    const char* entry;
    bool liquid;  // the ideal liquid lacks nothing these mixtures need except where noted
};
const PhaseRoutine kPhaseRoutines[] = {
    {"RX55IF_gpidlhx", true},  {"RX55IF_gpidvhx", false}, {"RX55IF_gpidlsx", true},  {"RX55IF_gpidvsx", false},
    {"RX55IF_gpidlmx", true},  {"RX55IF_gpidvmx", false}, {"RX55IF_gpidldx", true},  {"RX55IF_gpidvdx", false},
    {"RX55IF_gpidlcp", true},  {"RX55IF_gpidvcp", false}, {"RX55IF_gpidlcv", true},  {"RX55IF_gpidvcv", false},
    {"RX55IF_gpidlfu", true},  {"RX55IF_gpidvfu", false},
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

class RoutineDerivatives : public ::testing::TestWithParam<Case> {
protected:
    void SetUp() override { FakeHost::Reset(); }
    void TearDown() override {
        for (const HostReport& r : FakeHost::Reports())
            if (r.severity == ZOREXP_REPORT_ERROR && HasFailure()) std::cerr << r.routine << ": " << r.message << "\n";
    }
};

TEST_P(RoutineDerivatives, PhasePropertiesFugacitiesAndKValuesMatchCentralDifferences) {
    const Case& c = GetParam();
    RoutineLibrary qelp(QelpLibrary());
    const int list = FakeHost::AddList(c.ids, c.options);
    const int n = static_cast<int>(c.ids.size());
    const std::vector<Arg> args{Arg::R(c.t), Arg::R(c.p), Arg::V(c.x)};
    for (const PhaseRoutine& r : kPhaseRoutines) {
        const bool vectorOut = std::string(r.entry).find("fu") != std::string::npos;
        const CallResult value = CallRoutine(qelp.Entry(r.entry), list, args, {vectorOut ? n : 0});
        if (value.status != 1) {
            // Only the ideal liquid of a mixture with a supercritical or data-less component may refuse.
            ASSERT_TRUE(r.liquid) << r.entry << ": " << FakeHost::Reports().back().message;
            continue;
        }
        EXPECT_LT(WorstDerivativeMismatch(qelp.Entry(r.entry), list, args, {vectorOut ? n : 0}, 1e-9), 2e-5) << c.name << " " << r.entry;
    }
    std::vector<double> y(c.x.rbegin(), c.x.rend());
    const std::vector<Arg> kArgs{Arg::R(c.t), Arg::R(c.p), Arg::V(c.x), Arg::V(y)};
    if (CallRoutine(qelp.Entry("RX55IF_gpid0kx"), list, kArgs, {n}).status == 1) {
        EXPECT_LT(WorstDerivativeMismatch(qelp.Entry("RX55IF_gpid0kx"), list, kArgs, {n}, 1e-9), 2e-5) << c.name << " PKVALUES";
    }
}

TEST_P(RoutineDerivatives, LocalModelsMatchCentralDifferencesAndTheRigorousValueAtTheFit) {
    const Case& c = GetParam();
    RoutineLibrary qelp(QelpLibrary());
    RoutineLibrary local(LocalModelLibrary());
    const int list = FakeHost::AddList(c.ids, c.options);
    for (bool liquid : {true, false}) {
        const CallResult fit = CallRoutine(local.Entry(liquid ? "RX55IF_gpllpr" : "RX55IF_gplvpr"), list,
                                           {Arg::R(c.t), Arg::R(c.p), Arg::V(c.x)}, {0}, ZOREXP_CALL_VALUES);
        if (fit.status != 1) continue;
        const double id = fit.outputs[0];
        const CallResult rigorous = CallRoutine(qelp.Entry(liquid ? "RX55IF_gpidlhx" : "RX55IF_gpidvhx"), list,
                                                {Arg::R(c.t), Arg::R(c.p), Arg::V(c.x)}, {0});
        if (liquid) {
            const std::vector<Arg> h{Arg::R(c.t), Arg::V(c.x), Arg::Id(id), Arg::I(1)};
            const CallResult local_h = CallRoutine(local.Entry("RX55IF_qelplex"), 0, h, {0});
            ASSERT_EQ(local_h.status, 1);
            EXPECT_NEAR(local_h.outputs[0], rigorous.outputs[0], 1e-12);
            EXPECT_NEAR(local_h.D(0, 0), rigorous.D(0, 0), 1e-12);  // cp of the fit
            for (std::size_t k = 0; k < c.x.size(); ++k) EXPECT_NEAR(local_h.D(0, 1 + k), rigorous.D(0, 2 + k), 1e-12);
            EXPECT_LT(WorstDerivativeMismatch(local.Entry("RX55IF_qelplex"), 0, h, {0}, 1e-9), 1e-6);
            EXPECT_LT(WorstDerivativeMismatch(local.Entry("RX55IF_qelpldx"), 0, {Arg::R(c.t + 7), Arg::Id(id), Arg::I(1)}, {0}, 1e-9), 1e-6);
            EXPECT_LT(WorstDerivativeMismatch(local.Entry("RX55IF_qelp0wx"), 0, {Arg::V(c.x), Arg::Id(id)}, {0}, 1e-9), 1e-6);
        } else {
            const std::vector<Arg> h{Arg::R(c.t), Arg::R(c.p), Arg::V(c.x), Arg::Id(id)};
            const CallResult local_h = CallRoutine(local.Entry("RX55IF_qelpvex"), 0, h, {0});
            ASSERT_EQ(local_h.status, 1);
            EXPECT_NEAR(local_h.outputs[0], rigorous.outputs[0], 1e-12);
            EXPECT_LT(WorstDerivativeMismatch(local.Entry("RX55IF_qelpvex"), 0, {Arg::R(c.t + 5), Arg::R(c.p * 1.1), Arg::V(c.x), Arg::Id(id)}, {0}, 1e-9), 1e-6);
            EXPECT_LT(WorstDerivativeMismatch(local.Entry("RX55IF_qelpvmx"), 0, {Arg::R(c.t), Arg::R(c.p), Arg::Id(id)}, {0}, 1e-9), 1e-6);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Mixtures, RoutineDerivatives, ::testing::ValuesIn(kCases), [](const auto& info) { return std::string(info.param.name); });

}  // namespace
