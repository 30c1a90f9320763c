#include <gtest/gtest.h>

#include <vector>

#include "model_driver.hpp"
#include "models/unitops/rplug_tcool1.hpp"

namespace {

class RplugTcool1 : public ::testing::Test {
protected:
    // NPTS = 1 (node points 0 and 1) at a point with known residuals.
    void Build(const char* ctype) {
        SetUser(m.NPTS, VX_Value(1, 0));
        SetUser(m.CTYPE, VX_Value(ctype, 0));
        Prepare(m);
        m.T_PROCESS(0).SetSolverValue(300.0);
        m.T_PROCESS(1).SetSolverValue(280.0);
        m.Q_FLUX(0).SetSolverValue(100.0);
        m.Q_FLUX(1).SetSolverValue(120.0);
        m.T_COOL_(0).SetSolverValue(40.0);
        m.T_COOL_(1).SetSolverValue(60.0);
        m.T_COOL.SetSolverValue(50.0);
        m.U.SetSolverValue(0.5);
    }
    std::vector<std::string> ColumnPaths(const Pattern& p) {
        std::vector<std::string> out;
        for (int c : p.cols) out.push_back(session->Columns()[static_cast<std::size_t>(c)]->Path());
        return out;
    }

    ScopedSession session;
    VX_RPLUG_TCOOL1 m{true};
};

TEST_F(RplugTcool1, SpecifiedCoolantTemperatureInCapitals) {
    Build("TCOOL-SPEC");
    const Pattern p = DeclareEquations(m, *session);
    EXPECT_EQ(p.setUpResult, 2);
    EXPECT_EQ(p.equations, 2);
    EXPECT_EQ(p.nonzeros, 8);
    EXPECT_EQ(p.patternResult, 8);
    EXPECT_EQ(p.rows, (std::vector<int>{0, 0, 0, 0, 1, 1, 1, 1}));
    EXPECT_EQ(ColumnPaths(p), (std::vector<std::string>{"Q_FLUX(0)", "U", "T_PROCESS(0)", "T_COOL", "Q_FLUX(1)", "U",
                                                        "T_PROCESS(1)", "T_COOL"}));
    EXPECT_STREQ(m.RowLabel(1), "VX_Eqn1");

    std::vector<double> r(2), v(8);
    EXPECT_EQ(m.Residuals(r.data(), 0, 0), 2);
    EXPECT_EQ(r, (std::vector<double>{-25.0, 5.0}));
    EXPECT_EQ(m.Jacobian(v.data(), 0, 0), 8);
    EXPECT_EQ(v, (std::vector<double>{1, -250, -0.5, 0.5, 1, -230, -0.5, 0.5}));
}

TEST_F(RplugTcool1, CoolantProfileSharesGroupOne) {
    Build("TCOOL-PROF");
    const Pattern p = DeclareEquations(m, *session, 4);
    ASSERT_EQ(m.Groups().size(), 1u);
    EXPECT_EQ(m.Groups()[0].group, 5);
    EXPECT_STREQ(m.RowLabel(0), "VX_Eqn2");
    EXPECT_EQ(ColumnPaths(p)[3], "T_COOL_(0)");
    std::vector<double> r(2), v(8);
    m.Residuals(r.data(), 0, 0);
    m.Jacobian(v.data(), 0, 0);
    EXPECT_EQ(r, (std::vector<double>{-30.0, 10.0}));
    EXPECT_EQ(v, (std::vector<double>{1, -260, -0.5, 0.5, 1, -220, -0.5, 0.5}));
}

TEST_F(RplugTcool1, OtherHeatingOptionsGiveNoEquations) {
    for (const char* ctype : {"Adiabatic", "T-Spec", "QFlux-Prof"}) {
        Build(ctype);
        const Pattern p = DeclareEquations(m, *session);
        EXPECT_EQ(p.setUpResult, 0) << ctype;
        EXPECT_TRUE(m.Groups().empty()) << ctype;
        EXPECT_EQ(p.patternResult, 0) << ctype;
        EXPECT_EQ(session->RowCount(), 0) << ctype;
        std::vector<double> buffer(8, 7.0);
        EXPECT_EQ(m.Residuals(buffer.data(), 0, 5), 5) << ctype;
        EXPECT_EQ(m.Residuals(buffer.data(), 1, 5), 5) << ctype;
        EXPECT_EQ(m.Jacobian(buffer.data(), 0, 5), 5) << ctype;
        EXPECT_EQ(buffer, std::vector<double>(8, 7.0)) << ctype;
    }
}

TEST_F(RplugTcool1, GroupSelectionWritesOnlyItsBlock) {
    Build("TCool-Spec");
    DeclareEquations(m, *session, 7);   // its group is 8
    std::vector<double> r(6, -1.0), v(12, -1.0);
    EXPECT_EQ(m.Residuals(r.data(), 9, 3), 5);
    EXPECT_EQ(m.Jacobian(v.data(), 9, 2), 10);
    EXPECT_EQ(r, std::vector<double>(6, -1.0));
    EXPECT_EQ(v, std::vector<double>(12, -1.0));
    EXPECT_EQ(m.Residuals(r.data(), 8, 3), 5);
    EXPECT_EQ(r, (std::vector<double>{-1, -1, -1, -25, 5, -1}));
    EXPECT_EQ(m.Jacobian(v.data(), 8, 2), 10);
    EXPECT_EQ(v[1], -1.0);
    EXPECT_EQ(v[3], -250.0);
    EXPECT_EQ(v[10], -1.0);
}

TEST_F(RplugTcool1, AssignmentsRespectUserValuesAndRepeat) {
    SetUser(m.NPTS, VX_Value(3, 0));
    Prepare(m, 10);
    EXPECT_EQ(m.NRANGE.fv(), VX_IntSetData(0, 3));
    EXPECT_EQ(m.T_PROCESS.Size(), 4);
    EXPECT_EQ(m.T_COOL.CurrSpec(), VX_SPEC_FIXED);
    EXPECT_EQ(m.T_COOL.SourceOf(VX_ATTR_SPEC), VX_SRC_MODEL);
    EXPECT_EQ(m.T_COOL.LevelOf(VX_ATTR_SPEC), 10);

    VX_TEMPERATURE* last = &m.T_PROCESS(3);
    Prepare(m, 10);
    EXPECT_EQ(m.NRANGE.fv(), VX_IntSetData(0, 3));
    EXPECT_EQ(&m.T_PROCESS(3), last);
    EXPECT_EQ(m.T_COOL.LevelOf(VX_ATTR_SPEC), 10);

    ASSERT_EQ(m.T_COOL.AssignUser(VX_ATTR_SPEC, VX_Value(VX_SPEC_FREE, 0, 0, 0)), VX_AS_ASSIGNED);
    Prepare(m, 10);
    EXPECT_EQ(m.T_COOL.CurrSpec(), VX_SPEC_FREE);
    EXPECT_EQ(m.T_COOL.SourceOf(VX_ATTR_SPEC), VX_SRC_USER);
}

TEST_F(RplugTcool1, AssignedModelKeepsFollowingItsOwnSets) {
    Build("TCool-Prof");
    VX_RPLUG_TCOOL1 other(true);
    SetUser(other.NPTS, VX_Value(3, 0));
    Prepare(other);
    other.T_COOL_(3).SetSolverValue(77.0);
    m = other;
    ASSERT_EQ(m.T_COOL_.Size(), 4);
    EXPECT_EQ(m.T_COOL_(3).fv(), 77.0);
    EXPECT_NE(&m.T_COOL_(3), &other.T_COOL_(3));
    SetUser(m.NPTS, VX_Value(5, 0));
    m.ExecuteAssignments(10, VX_CTX_MODEL);   // no SetDims: the arrays follow NRANGE
    EXPECT_EQ(m.T_COOL_.Size(), 6);
    EXPECT_EQ(other.T_COOL_.Size(), 4);
}

}  // namespace
