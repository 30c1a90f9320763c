// The liquid and vapour property blocks: the mode chosen from the globals and the polymer
// switch (texts compared without regard to case), the composition's start, and a failing
// property routine ending the residual pass.
#include <gtest/gtest.h>

#include <string>

#include "model_driver.hpp"
#include "models/properties/props_liquid.hpp"
#include "models/properties/props_vapor.hpp"

namespace {

struct Block {
    VX_ProtocolDriver driver;
    int status = 0;
    std::string Failure() const { return driver.LastFailure().message; }
};

// Links the globals, applies the user settings, and sets the block up to its equations.
template <class M, class Settings>
void SetUpBlock(M& m, Block& b, Settings&& settings) {
    b.driver.AddBlock(m);
    b.status = LinkGlobals(b.driver);
    settings();
    for (int pass = 0; pass < 2 && b.status >= 0; ++pass) {
        b.status = b.driver.SetDims();
        if (b.status >= 0) b.status = b.driver.ExecuteAssignments(10, VX_CTX_MODEL);
    }
    if (b.status >= 0) b.status = b.driver.SetUpEquations();
    if (b.status >= 0) {
        std::vector<int> rows(static_cast<std::size_t>(b.driver.Entries())), cols(rows.size());
        b.status = b.driver.JacPattern(rows.data(), cols.data());
    }
}

std::vector<std::string> Labels(VX_ProtocolDriver& d) {
    std::vector<std::string> labels;
    for (int row = 0; row < d.Rows(); ++row) labels.emplace_back(d.RowLabel(row));
    return labels;
}

// The rows of a set-up block: the calls' rows are labelled by their output's position, the
// density row, last, by its name.
TEST(PropsLiquid, ModeFollowsTheGlobalUnlessTheBlockSaysOtherwise) {
    using L = std::vector<std::string>;
    const L local{"[1]", "[1]", "[1]", "[1]", "Loc_dens_mol_liq"};
    const L rigorous{"[1]", "[1]", "[1]", "Rig_dens_mass_liq"};
    struct Case {
        const char* global;
        const char* propmode;   // null: left to the global
        L labels;
    } cases[] = {{"Rigorous", nullptr, rigorous}, {"Local", nullptr, local}, {"local", nullptr, local},
                 {"Local", "RIGOROUS", rigorous}, {"Rigorous", "Local", local}};
    for (const Case& c : cases) {
        ScopedSession session;
        session->DefineComponentList("LIQ", {"WATER", "METHANOL", "ETHANOL"});
        VX_PROPS_LIQUID m(true);
        Block b;
        SetUpBlock(m, b, [&] {
            SetUser(*m.GLOBALPROPMODE, VX_Value(c.global, 0));
            if (c.propmode) SetUser(m.PROPMODE, VX_Value(c.propmode, 0));
        });
        ASSERT_GE(b.status, 0) << b.Failure();
        EXPECT_EQ(Labels(b.driver), c.labels) << c.global << " / " << (c.propmode ? c.propmode : "-");
    }
}

TEST(PropsLiquid, PolymerForcesTheRigorousModeAndItsPolymerRoutines) {
    ScopedSession session;
    session->DefineComponentList("LIQ", {"WATER", "METHANOL"});
    VX_PROPS_LIQUID m(true);
    Block b;
    SetUpBlock(m, b, [&] {
        SetUser(*m.GLOBALPROPMODE, VX_Value("Local", 0));
        SetUser(m.POLYMERPROP, VX_Value("yes", 0));
    });
    ASSERT_GE(b.status, 0) << b.Failure();
    EXPECT_EQ(SUValue::CompareCI(m.PROPMODE.fv(), "Rigorous"), 0);
    EXPECT_EQ(Labels(b.driver), (std::vector<std::string>{"[1]", "[1]", "[1]", "Rig_dens_mass_liq"}));
    // The property package has no polymer routines: the first call says which one it lacks.
    std::vector<double> r(static_cast<std::size_t>(b.driver.Rows()));
    EXPECT_LT(b.driver.Residuals(r.data()), 0);
    EXPECT_NE(b.Failure().find("RX55IF_gpipenth"), std::string::npos) << b.Failure();
}

// At the state of its fit the local mode gives what the rigorous mode gives. DSID, the fitted
// set's number, is placed where its own row (the first) is satisfied, as a solve would.
TEST(PropertyBlocks, LocalModelsReproduceTheRigorousValuesAtTheirFit) {
    ScopedSession session;
    session->DefineComponentList("LIQ", {"WATER", "METHANOL", "ETHANOL"});
    auto evaluate = [](auto& m, const char* mode, std::vector<double>& r) {
        Block b;
        SetUpBlock(m, b, [&] { SetUser(m.PROPMODE, VX_Value(mode, 0)); });
        EXPECT_GE(b.status, 0) << b.Failure();
        m.T.SetSolverValue(40.0);
        m.P.SetSolverValue(2.0);
        r.assign(static_cast<std::size_t>(b.driver.Rows()), 0.0);
        if (SUValue::CompareCI(mode, "Local") == 0) {
            EXPECT_GE(b.driver.Residuals(r.data()), -1000);   // may fail on the unplaced number
            m.DSID.SetSolverValue(m.DSID.fv() - r[0]);
        }
        EXPECT_GE(b.driver.Residuals(r.data()), 0) << b.Failure();
    };
    VX_PROPS_LIQUID rigorous(true), local(true);
    std::vector<double> rr, rl;
    evaluate(rigorous, "Rigorous", rr);
    evaluate(local, "Local", rl);
    // Rows: rigorous [H], [RHO], [MW], density; local [DSID], [H], [RHOM], [MW], density. With
    // the same variable values the residuals of the same outputs agree.
    ASSERT_EQ(rr.size(), 4u);
    ASSERT_EQ(rl.size(), 5u);
    EXPECT_NEAR(rl[1], rr[0], 1e-12);
    EXPECT_NEAR(rl[3], rr[2], 1e-12);
    EXPECT_EQ(rl[0], 0.0);
}

TEST(PropsLiquid, OneComponentHasTheWholeFraction) {
    ScopedSession session;
    session->DefineComponentList("PURE", {"WATER"});
    VX_PROPS_LIQUID m(true);
    Block b;
    SetUpBlock(m, b, [] {});
    ASSERT_GE(b.status, 0) << b.Failure();
    EXPECT_DOUBLE_EQ(m.X("WATER").fv(), 1.0);
    EXPECT_DOUBLE_EQ(m.T.Upper(), 1995.0);
    EXPECT_DOUBLE_EQ(m.P.Lower(), 1e-5);
}

TEST(PropertyBlocks, AnUnknownComponentEndsTheResidualPassWithTheRoutinesStatus) {
    for (const char* mode : {"Rigorous", "Local"}) {
        ScopedSession session;
        session->DefineComponentList("BAD", {"WATER", "METHANL"});
        VX_PROPS_VAPOR m(true);
        Block b;
        SetUpBlock(m, b, [&] { SetUser(m.PROPMODE, VX_Value(mode, 0)); });
        ASSERT_GE(b.status, 0) << b.Failure();
        std::vector<double> r(static_cast<std::size_t>(b.driver.Rows()), -7.0);
        EXPECT_LT(b.driver.Residuals(r.data()), 0) << mode;
        EXPECT_NE(b.Failure().find("METHANL"), std::string::npos) << mode << ": " << b.Failure();
        EXPECT_EQ(r.back(), -7.0) << mode;   // the density row after the calls is not reached
    }
}

}  // namespace
