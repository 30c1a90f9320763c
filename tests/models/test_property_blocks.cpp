// The liquid and vapour property blocks: the mode chosen from the globals and the polymer
// switch (texts compared without regard to case), local against rigorous values, and a
// failing property routine ending the residual pass.
#include <gtest/gtest.h>

#include "model_driver.hpp"
#include "models/properties/props_liquid.hpp"
#include "models/properties/props_vapor.hpp"

namespace {

using Labels = std::vector<std::string>;

// The calls' rows are labelled by their output's position, the density row, last, by its name.
const Labels kLocal{"[1]", "[1]", "[1]", "[1]", "Loc_dens_mol_liq"};
const Labels kRigorous{"[1]", "[1]", "[1]", "Rig_dens_mass_liq"};

TEST(PropsLiquid, ModeFollowsTheGlobalUnlessTheBlockSaysOtherwise) {
    struct Case {
        const char *global, *propmode, *polymer;   // null: not set
        const Labels& labels;
    } cases[] = {{"Rigorous", nullptr, nullptr, kRigorous}, {"local", nullptr, nullptr, kLocal},
                 {"Local", "RIGOROUS", nullptr, kRigorous}, {"Rigorous", "Local", nullptr, kLocal},
                 {"Local", nullptr, "yes", kRigorous}};
    for (const Case& c : cases) {
        ScopedSession session;
        session->DefineComponentList("LIQ", {"WATER", "METHANOL", "ETHANOL"});
        VX_PROPS_LIQUID m(true);
        BlockUnderTest b(m, [&] {
            SetUser(*m.GLOBALPROPMODE, VX_Value(c.global, 0));
            if (c.propmode) SetUser(m.PROPMODE, VX_Value(c.propmode, 0));
            if (c.polymer) SetUser(m.POLYMERPROP, VX_Value(c.polymer, 0));
        });
        ASSERT_GE(b.status, 0) << b.Failure();
        EXPECT_EQ(b.Labels(), c.labels) << c.global << " / " << (c.propmode ? c.propmode : "-");
        if (!c.polymer) continue;
        // Polymer forces the rigorous mode and its polymer routines, which this property package
        // lacks: the first call says which.
        EXPECT_EQ(SUValue::CompareCI(m.PROPMODE.fv(), "Rigorous"), 0);
        b.Residuals();
        EXPECT_LT(b.status, 0);
        EXPECT_NE(b.Failure().find("RX55IF_gpipenth"), std::string::npos) << b.Failure();
    }
}

TEST(PropsLiquid, OneComponentHasTheWholeFraction) {
    ScopedSession session;
    session->DefineComponentList("PURE", {"WATER"});
    VX_PROPS_LIQUID m(true);
    BlockUnderTest b(m);
    ASSERT_GE(b.status, 0) << b.Failure();
    EXPECT_DOUBLE_EQ(m.X("WATER").fv(), 1.0);
    EXPECT_DOUBLE_EQ(m.T.Upper(), 1995.0);
    EXPECT_DOUBLE_EQ(m.P.Lower(), 1e-5);
}

// At the state of its fit the local mode gives what the rigorous mode gives. DSID, the fitted
// set's number, is placed where its own row (the first) is satisfied, as a solve would.
TEST(PropertyBlocks, LocalModelsReproduceTheRigorousValuesAtTheirFit) {
    ScopedSession session;
    session->DefineComponentList("LIQ", {"WATER", "METHANOL", "ETHANOL"});
    VX_PROPS_LIQUID rigorous(true), local(true);
    BlockUnderTest r(rigorous), l(local, [&] { SetUser(local.PROPMODE, VX_Value("Local", 0)); });
    ASSERT_GE(l.status, 0) << l.Failure();
    for (VX_PROPS_LIQUID* m : {&rigorous, &local}) {
        m->T.SetSolverValue(40.0);
        m->P.SetSolverValue(2.0);
    }
    local.DSID.SetSolverValue(local.DSID.fv() - l.Residuals()[0]);
    const auto rr = r.Residuals(), rl = l.Residuals();
    ASSERT_GE(l.status, 0) << l.Failure();
    // Rigorous rows [H], [RHO], [MW]; local rows [DSID], [H], [RHOM], [MW].
    EXPECT_NEAR(rl[1], rr[0], 1e-12);
    EXPECT_NEAR(rl[3], rr[2], 1e-12);
    EXPECT_EQ(rl[0], 0.0);
}

TEST(PropertyBlocks, AnUnknownComponentEndsTheResidualPassWithTheRoutinesStatus) {
    for (const char* mode : {"Rigorous", "Local"}) {
        ScopedSession session;
        session->DefineComponentList("BAD", {"WATER", "METHANL"});
        VX_PROPS_VAPOR m(true);
        BlockUnderTest b(m, [&] { SetUser(m.PROPMODE, VX_Value(mode, 0)); });
        ASSERT_GE(b.status, 0) << b.Failure();
        std::vector<double> r(static_cast<std::size_t>(b.driver.Rows()), -7.0);
        EXPECT_LT(b.driver.Residuals(r.data()), 0) << mode;
        EXPECT_NE(b.Failure().find("METHANL"), std::string::npos) << mode << ": " << b.Failure();
        EXPECT_EQ(r.back(), -7.0) << mode;   // the density row after the calls is not reached
    }
}

}  // namespace
