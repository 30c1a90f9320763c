// How the property routines behave for users: component names, list options, bad input, notes,
// the reference state through PENTH_MOLAR and PGIBBS_MOL_IDLGAS, the critical-constant and local
// routines, and which entry points exist.
#include <cmath>

#include <gtest/gtest.h>

#include "routine_harness.hpp"
#include "routine_paths.hpp"

namespace {

class PropertyRoutines : public ::testing::Test {
protected:
    void SetUp() override {
        FakeHost::Reset();
        qelp.Attach();
    }
    CallResult Liquid(const char* entry, int list, double t, double p, std::vector<double> x) {
        return CallRoutine(qelp.Entry(entry), list, {Arg::R(t), Arg::R(p), Arg::V(std::move(x))}, {0});
    }
    std::string LastError() const {
        for (auto it = FakeHost::Reports().rbegin(); it != FakeHost::Reports().rend(); ++it)
            if (it->severity == ZOREXP_REPORT_ERROR) return it->routine + ": " + it->message;
        return "";
    }
    RoutineLibrary qelp{QelpLibrary()};
};

TEST_F(PropertyRoutines, ComponentsAreFoundByIdOrAliasInAnyCaseAndUnknownOnesAreRefusedWithSuggestions) {
    const int byId = FakeHost::AddList({"WATER", "METHANOL"});
    const int byAlias = FakeHost::AddList({"h2o", "MeOH"});
    const CallResult a = Liquid("RX55IF_gpidlhx", byId, 50.0, 1.0, {0.6, 0.4});
    const CallResult b = Liquid("RX55IF_gpidlhx", byAlias, 50.0, 1.0, {0.6, 0.4});
    ASSERT_EQ(a.status, 1);
    EXPECT_EQ(a.outputs, b.outputs);

    const int typo = FakeHost::AddList({"WATER", "METHANL"});
    // The user's input is at fault, not the state: the status says so.
    EXPECT_EQ(Liquid("RX55IF_gpidlhx", typo, 50.0, 1.0, {0.6, 0.4}).status, ZOREXP_STATUS_BAD_INPUT);
    EXPECT_EQ(LastError(), "RX55IF_gpidlhx: PENTH_MOL_LIQ: unknown component \"METHANL\" (did you mean METHANE, METHANOL, ETHANE?)");
}

TEST_F(PropertyRoutines, ListOptionsChooseTheMethodAndInteractionParameters) {
    const std::vector<std::string> ids{"CO2", "METHANE"};
    const int ideal = FakeHost::AddList(ids);
    const int pr = FakeHost::AddList(ids, {{"property-method", "Peng-Robinson"}});
    const int prKij = FakeHost::AddList(ids, {{"PROPERTY-METHOD", "PENG-ROBINSON"}, {"PR-KIJ", "co2:ch4 = 0.0919"}});
    const std::vector<Arg> args{Arg::R(-40.0), Arg::R(30.0), Arg::V({0.4, 0.6})};
    const double phiIdeal = CallRoutine(qelp.Entry("RX55IF_gpidvfu"), ideal, args, {2}).outputs[0];
    const double phiPr = CallRoutine(qelp.Entry("RX55IF_gpidvfu"), pr, args, {2}).outputs[0];
    const double phiKij = CallRoutine(qelp.Entry("RX55IF_gpidvfu"), prKij, args, {2}).outputs[0];
    EXPECT_EQ(phiIdeal, 1.0);
    EXPECT_LT(phiPr, 0.9);
    EXPECT_GT(std::abs(phiKij - phiPr), 1e-3);

    const int badMethod = FakeHost::AddList(ids, {{"PROPERTY-METHOD", "NRTL"}});
    EXPECT_EQ(CallRoutine(qelp.Entry("RX55IF_gpidvfu"), badMethod, args, {2}).status, 0);
    EXPECT_NE(LastError().find("PROPERTY-METHOD \"NRTL\" is not a method (IDEAL or PENG-ROBINSON)"), std::string::npos);
    const int badKij = FakeHost::AddList(ids, {{"PROPERTY-METHOD", "PENG-ROBINSON"}, {"PR-KIJ", "CO2:METHANE=big"}});
    EXPECT_EQ(CallRoutine(qelp.Entry("RX55IF_gpidvfu"), badKij, args, {2}).status, 0);
    EXPECT_NE(LastError().find("\"big\" is not a number"), std::string::npos);
}

TEST_F(PropertyRoutines, BadStateOrFractionsFailTheCallNamingRoutineAndValue) {
    const int list = FakeHost::AddList({"BENZENE", "TOLUENE"});
    const struct {
        double t, p;
        std::vector<double> x;
        const char* says;
    } cases[] = {
        {NAN, 1.0, {0.5, 0.5}, "temperature nan C is not above absolute zero"},
        {-300.0, 1.0, {0.5, 0.5}, "temperature -300 C is not above absolute zero"},
        {25.0, 0.0, {0.5, 0.5}, "pressure 0 bar is not positive"},
        {25.0, -2.0, {0.5, 0.5}, "pressure -2 bar is not positive"},
        {25.0, 1.0, {0.5, -0.1}, "mole fractions: element 2 is -0.1"},
        {25.0, 1.0, {NAN, 0.5}, "mole fractions: element 1 is nan"},
        {25.0, 1.0, {0.0, 0.0}, "mole fractions sum to 0"},
    };
    for (const auto& c : cases) {
        const CallResult r = Liquid("RX55IF_gpidldx", list, c.t, c.p, c.x);
        EXPECT_EQ(r.status, 0) << c.says;
        EXPECT_NE(LastError().find(std::string("RX55IF_gpidldx: PDENS_MASS_LIQ: ") + c.says), std::string::npos) << LastError();
    }
    EXPECT_EQ(FakeHost::Count(ZOREXP_REPORT_NOTE), 0);
}

TEST_F(PropertyRoutines, UnnormalisedFractionsAreNormalisedAndNotedOncePerSolve) {
    const int list = FakeHost::AddList({"BENZENE", "TOLUENE"});
    const double h = Liquid("RX55IF_gpidlhx", list, 60.0, 1.0, {0.3, 0.7}).outputs[0];
    EXPECT_NEAR(Liquid("RX55IF_gpidlhx", list, 60.0, 1.0, {0.6, 1.4}).outputs[0], h, 1e-15);
    Liquid("RX55IF_gpidlhx", list, 61.0, 1.0, {0.6, 1.4});
    EXPECT_EQ(FakeHost::Count(ZOREXP_REPORT_NOTE, "mole fractions sum to 2, not 1"), 1);
    CallRoutine(qelp.Entry("RX55IF_gpidlhx"), list, {Arg::R(60.0), Arg::R(1.0), Arg::V({0.6, 1.4})}, {0}, ZOREXP_CALL_PREPARE);
    EXPECT_EQ(FakeHost::Count(ZOREXP_REPORT_NOTE, "mole fractions sum to 2, not 1"), 2);
}

TEST_F(PropertyRoutines, ExtrapolationIsSmoothAndNotedOncePerSolve) {
    const int list = FakeHost::AddList({"BENZENE", "TOLUENE"});
    // Benzene's Antoine range ends at 104 C; the liquid fugacity goes on smoothly above it.
    const auto phi = [&](double t) { return CallRoutine(qelp.Entry("RX55IF_gpidlfu"), list, {Arg::R(t), Arg::R(5.0), Arg::V({0.5, 0.5})}, {2}); };
    const CallResult below = phi(103.999), above = phi(104.001), further = phi(150.0);
    ASSERT_EQ(further.status, 1);
    EXPECT_NEAR(above.outputs[0], below.outputs[0], 1e-4 * below.outputs[0]);
    EXPECT_EQ(FakeHost::Count(ZOREXP_REPORT_NOTE, "vapour pressure of BENZENE extrapolated"), 1);
    EXPECT_EQ(FakeHost::Count(ZOREXP_REPORT_NOTE, "of TOLUENE"), 1);  // beyond 136 C at 150 C
}

TEST_F(PropertyRoutines, MissingDatabaseValuesAreNamed) {
    const int list = FakeHost::AddList({"N-NONANE", "N-DECANE"});
    EXPECT_EQ(Liquid("RX55IF_gpidlhx", list, 100.0, 1.0, {0.5, 0.5}).status, 0);
    EXPECT_NE(LastError().find("no ideal-gas heat capacity or formation enthalpy for component N-NONANE"), std::string::npos) << LastError();
    EXPECT_EQ(Liquid("RX55IF_gpidlmx", list, 100.0, 1.0, {0.5, 0.5}).status, 1);  // the density needs none of it
}

TEST_F(PropertyRoutines, BubbleAndDewTemperaturesAndVapourPressure) {
    const int water = FakeHost::AddList({"WATER"});
    const CallResult tb = CallRoutine(qelp.Entry("RX55IF_gpibtx"), water, {Arg::R(1.01325), Arg::V({1.0})}, {0}, ZOREXP_CALL_VALUES);
    EXPECT_NEAR(tb.outputs[0], 100.0, 0.05);
    const CallResult ps = CallRoutine(qelp.Entry("RX55IF_gpi0px"), water, {Arg::R(100.0), Arg::V({1.0})}, {0}, ZOREXP_CALL_VALUES);
    EXPECT_NEAR(ps.outputs[0], 1.01325, 0.002);
    const int pr = FakeHost::AddList({"PROPANE", "N-BUTANE"}, {{"PROPERTY-METHOD", "PENG-ROBINSON"}});
    const double bubble = CallRoutine(qelp.Entry("RX55IF_gpibtx"), pr, {Arg::R(10.0), Arg::V({0.5, 0.5})}, {0}, ZOREXP_CALL_VALUES).outputs[0];
    const double dew = CallRoutine(qelp.Entry("RX55IF_gpidtx"), pr, {Arg::R(10.0), Arg::V({0.5, 0.5})}, {0}, ZOREXP_CALL_VALUES).outputs[0];
    EXPECT_GT(dew, bubble + 5.0);
    EXPECT_GT(bubble, 20.0);  // propane boils at 26.9 C at 10 bar, n-butane at 79.5 C
    EXPECT_LT(dew, 79.5);
}

TEST_F(PropertyRoutines, MolecularWeightsAndIdealGasGibbsEnergyAtTheReferenceState) {
    const int list = FakeHost::AddList({"WATER", "CO2"});
    const CallResult m = CallRoutine(qelp.Entry("RX55IF_gpizw0"), list, {}, {2}, ZOREXP_CALL_VALUES);
    EXPECT_EQ(m.outputs, (std::vector<double>{18.015, 44.010}));
    const CallResult mw = CallRoutine(qelp.Entry("RX55IF_gpi0wx"), list, {Arg::V({0.5, 0.5})}, {0}, ZOREXP_CALL_VALUES);
    EXPECT_NEAR(mw.outputs[0], 31.0125, 1e-12);
    const CallResult g = CallRoutine(qelp.Entry("RX55IF_gpizgx_idlgas"), list, {Arg::R(25.0), Arg::V({0.5, 0.5})}, {2}, ZOREXP_CALL_VALUES);
    EXPECT_NEAR(g.outputs[0], -0.228572, 1e-9);  // GJ/kmol
    EXPECT_NEAR(g.outputs[1], -0.394359, 1e-9);
}

TEST_F(PropertyRoutines, RoutinesWithoutASourcedCorrelationAreAbsent) {
    for (const char* entry : {"RX55IF_gpidlkx", "RX55IF_gpidvkx", "RX55IF_gpidlvx", "RX55IF_gpidvvx", "RX55IF_gpidltx", "RX55IF_gpi2fe"})
        EXPECT_EQ(qelp.Entry(entry), nullptr) << entry;
}

TEST(MorvanexPropertyRoutines, PureEnthalpiesGiveHeatsOfReactionAndCriticalConstants) {
    FakeHost::Reset();
    RoutineLibrary lib(MorvanexPropertyLibrary());
    const int list = FakeHost::AddList({"METHANE", "O2", "CO2", "WATER"});
    const auto molar = [&](double t, int phase) {
        return CallRoutine(lib.Entry("RX55IF_spenth_molar"), list, {Arg::R(t), Arg::R(1.0), Arg::I(phase)}, {4}, ZOREXP_CALL_VALUES);
    };
    const CallResult v = molar(25.0, 1);
    ASSERT_EQ(v.status, 1);
    // CH4 + 2 O2 -> CO2 + 2 H2O(g): -802.6 kJ/mol from the formation enthalpies.
    EXPECT_NEAR(-v.outputs[0] - 2 * v.outputs[1] + v.outputs[2] + 2 * v.outputs[3], -0.802625, 1e-9);
    const int water = FakeHost::AddList({"WATER"});
    const auto waterAt = [&](int phase) {
        return CallRoutine(lib.Entry("RX55IF_spenth_molar"), water, {Arg::R(100.0), Arg::R(1.01325), Arg::I(phase)}, {1}, ZOREXP_CALL_VALUES);
    };
    EXPECT_NEAR(waterAt(1).outputs[0] - waterAt(0).outputs[0], 0.04066, 1e-5);  // the heat of vaporisation at 100 C
    EXPECT_EQ(waterAt(2).status, 0);

    const auto crit = [&](const char* entry, int index) {
        return CallRoutine(lib.Entry(entry), list, {Arg::V({0.25, 0.25, 0.25, 0.25}), Arg::I(index)}, {0}, ZOREXP_CALL_VALUES);
    };
    EXPECT_NEAR(crit("RX55IF_GPICRT", 4).outputs[0], 647.1 - 273.15, 1e-9);
    EXPECT_NEAR(crit("RX55IF_GPICRP", 0).outputs[0], (45.99 + 50.43 + 73.83 + 220.55) / 4, 1e-9);
    EXPECT_EQ(crit("RX55IF_GPICRT", 5).status, 0);
}

TEST(LocalModelRoutines, RefuseIdsTheyDidNotIssue) {
    FakeHost::Reset();
    RoutineLibrary lib(LocalModelLibrary());
    const int list = FakeHost::AddList({"BENZENE", "TOLUENE"});
    const double id = CallRoutine(lib.Entry("RX55IF_gplvpr"), list, {Arg::R(120.0), Arg::R(1.0), Arg::V({0.5, 0.5})}, {0}, ZOREXP_CALL_VALUES).outputs[0];
    EXPECT_EQ(CallRoutine(lib.Entry("RX55IF_qelpldx"), 0, {Arg::R(50.0), Arg::Id(id), Arg::I(1)}, {0}).status, 0);
    EXPECT_EQ(CallRoutine(lib.Entry("RX55IF_qelpldx"), 0, {Arg::R(50.0), Arg::Id(id + 40), Arg::I(1)}, {0}).status, 0);
    EXPECT_EQ(FakeHost::Count(ZOREXP_REPORT_ERROR, "is a vapour set, not one of PLIQUID_PAR"), 1);
    EXPECT_EQ(FakeHost::Count(ZOREXP_REPORT_ERROR, "was not returned by PLIQUID_PAR"), 1);
}

}  // namespace
