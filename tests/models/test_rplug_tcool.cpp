#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "model_driver.hpp"
#include "models/unitops/rplug_tcool.hpp"

namespace {

class RplugTcool : public ::testing::Test {
protected:
    void Build(int npts) {
        SetUser(m.NPTS, VX_Value(npts, 0));
        Prepare(m);
        m.T_CELL0.SetSolverValue(300.0);
        for (int i = 1; i <= npts; ++i) {
            m.T_CELL(i).SetSolverValue(300.0 - 10.0 * i);
            m.Q(i).SetSolverValue(i);
        }
        m.T_COOL.SetSolverValue(20.0);
        m.U.SetSolverValue(0.4);
        m.DIAM.SetSolverValue(0.05);
        m.NTUBE.SetSolverValue(100.0);
        m.L.SetSolverValue(6.0);
        m.DX.SetSolverValue(2.0);
    }
    // The duty of a cell at the point Build sets, factors formed in the model's order.
    static double Duty(double tIn, double tOut) {
        return ((tIn + tOut) * 0.5 - 20.0) * (2.0 * 0.05) * (3.141593 * 100.0) * (0.4 * 0.0036);
    }

    ScopedSession session;
    VX_RPLUG_TCOOL m{true};
};

TEST_F(RplugTcool, AssignmentsSetGlobalsSetAndSpecs) {
    Build(3);
    EXPECT_EQ(session->Global<VX_REALPARAMETER>("PI")->fv(), 3.141593);
    EXPECT_EQ(session->Global<VX_REALPARAMETER>("UCF6")->fv(), 0.0036);
    EXPECT_EQ(m.NPOINTS.fv(), VX_IntSetData(1, 3));
    EXPECT_EQ(m.U.CurrSpec(), VX_SPEC_FIXED);
    EXPECT_EQ(m.T_COOL.CurrSpec(), VX_SPEC_FIXED);
}

TEST_F(RplugTcool, OneCellHasTwoEquationsAndNoThirdGroup) {
    Build(1);
    const Pattern p = DeclareEquations(m, *session, 2);
    EXPECT_EQ(p.setUpResult, 2);
    EXPECT_EQ(p.nonzeros, 12);
    EXPECT_EQ(p.patternResult, 12);
    ASSERT_EQ(m.Groups().size(), 2u);
    EXPECT_EQ(m.Groups()[0].group, 3);
    EXPECT_EQ(m.Groups()[1].group, 4);
    EXPECT_EQ(VX_ModelType::m_stLastGroup, 4);
    std::vector<double> r(2), v(12);
    EXPECT_EQ(m.Residuals(r.data(), 0, 0), 2);
    EXPECT_EQ(m.Residuals(r.data(), 5, 0), 2);   // the empty third group
    EXPECT_DOUBLE_EQ(r[0], 2.0 - 6.0);
    EXPECT_DOUBLE_EQ(r[1], 1.0 - Duty(300.0, 290.0));
    EXPECT_EQ(m.Jacobian(v.data(), 0, 0), 12);
    EXPECT_EQ(v[1], -1.0);   // d/dL of DX - L / NPTS
}

TEST_F(RplugTcool, CellsAfterTheFirstUseTheirInletCell) {
    Build(3);
    const Pattern p = DeclareEquations(m, *session);
    EXPECT_EQ(p.setUpResult, 4);
    EXPECT_EQ(p.nonzeros, 32);
    EXPECT_STREQ(m.RowLabel(3), "VX_Eqn3");
    std::vector<std::string> row2;
    for (std::size_t k = 0; k < p.rows.size(); ++k)
        if (p.rows[k] == 2) row2.push_back(session->Columns()[static_cast<std::size_t>(p.cols[k])]->Path());
    // Every real variable and parameter of the equation, in the order it is first written.
    EXPECT_EQ(row2, (std::vector<std::string>{"Q(2)", "T_CELL(1)", "T_CELL(2)", "T_COOL", "DX", "DIAM", "PI", "NTUBE", "U",
                                              "UCF6"}));

    std::vector<double> r(4);
    EXPECT_EQ(m.Residuals(r.data(), 0, 0), 4);
    EXPECT_DOUBLE_EQ(r[0], 0.0);
    EXPECT_DOUBLE_EQ(r[2], 2.0 - Duty(290.0, 280.0));
    EXPECT_DOUBLE_EQ(r[3], 3.0 - Duty(280.0, 270.0));
}

TEST_F(RplugTcool, GroupSelectionWritesOnlyItsBlock) {
    Build(3);
    DeclareEquations(m, *session);
    std::vector<double> r(6, -1.0), v(36, -1.0);
    EXPECT_EQ(m.Residuals(r.data(), 2, 1), 5);
    EXPECT_EQ(r[1], -1.0);
    EXPECT_DOUBLE_EQ(r[2], 1.0 - Duty(300.0, 290.0));
    EXPECT_EQ(r[3], -1.0);
    EXPECT_EQ(m.Jacobian(v.data(), 3, 1), 33);
    EXPECT_EQ(v[12], -1.0);
    EXPECT_EQ(v[13], 1.0);   // d/dQ(2), the first entry of the third group
    EXPECT_DOUBLE_EQ(v[31], -((280.0 + 270.0) * 0.5 - 20.0) * (2.0 * 0.05) * (3.141593 * 100.0) * 0.0036);   // d/dU of Q(3)
    EXPECT_EQ(v[33], -1.0);
}

TEST_F(RplugTcool, NoCellsIsAFailureNamingTheElementAndTheParameter) {
    Build(0);
    const Pattern p = DeclareEquations(m, *session);
    EXPECT_EQ(p.setUpResult, VX_E_MODEL);
    EXPECT_NE(p.failure.find("array Q has no element (1)"), std::string::npos) << p.failure;
    EXPECT_NE(p.failure.find("NPTS = 0"), std::string::npos) << p.failure;
}

}  // namespace
