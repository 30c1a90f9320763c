// Procedure calls written in a description: the equations they make sit at the statement's
// place among the model's own, count in its groups, and their Jacobian rows agree with finite
// differences (PSQRT returns derivatives, PENTH_MOLAR does not).
#include <gtest/gtest.h>

#include <cmath>

#include "checks/driver_jacobian_check.hpp"
#include "model_driver.hpp"
#include "test_calls.hpp"

namespace {

TEST(ProcedureCalls, RowsComeInStatementOrderAndAgreeWithFiniteDifferences) {
    ScopedSession session;
    session->DefineComponentList("LIQUIDS", {"WATER", "METHANOL"});
    VX_TESTCALLS m(true);
    VX_ProtocolDriver driver;
    driver.AddBlock(m);
    ASSERT_GE(driver.SetDims(), 0);
    ASSERT_GE(driver.ExecuteAssignments(0, VX_CTX_MODEL), 0);
    m.X.SetSolverValue(6.25);
    m.T.SetSolverValue(40.0);
    m.P.SetSolverValue(2.0);
    ASSERT_GE(driver.SetUpEquations(), 0) << driver.LastFailure().message;
    ASSERT_EQ(driver.Rows(), 4);   // Y, H(WATER), H(METHANOL), HS
    std::vector<int> rows(static_cast<std::size_t>(driver.Entries())), cols(rows.size());
    ASSERT_GE(driver.JacPattern(rows.data(), cols.data()), 0);
    EXPECT_STREQ(driver.RowLabel(0), "[1]");
    EXPECT_STREQ(driver.RowLabel(1), "[1_1]");
    EXPECT_STREQ(driver.RowLabel(2), "[1_2]");
    EXPECT_STREQ(driver.RowLabel(3), "VX_Eqn3");

    std::vector<double> r(4);
    ASSERT_GE(driver.Residuals(r.data()), 0) << driver.LastFailure().message;
    EXPECT_DOUBLE_EQ(r[0], m.Y.fv() - 2.5);
    EXPECT_DOUBLE_EQ(r[3], m.HS.fv() - m.H("WATER").fv() - m.H("METHANOL").fv());

    const auto result = zx::checks::CheckDriverJacobian(driver);
    EXPECT_TRUE(result.ok()) << (result.worst.empty() ? "" : result.worst[0].rowName + " / " + result.worst[0].columnName);
}

}  // namespace
