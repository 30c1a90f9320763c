#include <gtest/gtest.h>

#include <vector>

#include "checks/driver_jacobian_check.hpp"
#include "model_driver.hpp"
#include "models/unitops/rplug_tcool.hpp"
#include "models/unitops/rplug_tcool1.hpp"

namespace {

using zx::checks::CheckDriverJacobian;
using zx::checks::CheckDriverStructure;

// The model's equations set up by a driver of their own.
struct Driven {
    explicit Driven(VX_ModelType& m) {
        driver.AddBlock(m);
        driver.Collect();
        setUp = driver.SetUpEquations();
    }
    VX_ProtocolDriver driver;
    std::int32_t setUp = 0;
};

// A model whose Jacobian is wrong in one entry (d/dU of the first equation), and one that
// declares a nonzero its pattern does not give.
class WrongJacobian : public VX_RPLUG_TCOOL1 {
public:
    using VX_RPLUG_TCOOL1::VX_RPLUG_TCOOL1;
    int Jacobian(double* values, int group, int start) override {
        const int end = VX_RPLUG_TCOOL1::Jacobian(values, group, start);
        values[start + 1] *= 1.001;
        return end;
    }
};
class ExtraNonZero : public VX_RPLUG_TCOOL1 {
public:
    using VX_RPLUG_TCOOL1::VX_RPLUG_TCOOL1;
    int SetUpEquations() override {
        const int n = VX_RPLUG_TCOOL1::SetUpEquations();
        AddNonZero(T_COOL_(0));
        return n;
    }
};

template <class Model>
void BuildTcool1(Model& m) {
    SetUser(m.NPTS, VX_Value(3, 0));
    SetUser(m.CTYPE, VX_Value("TCool-Spec", 0));
    Prepare(m);
    for (int i = 0; i <= 3; ++i) {
        m.T_PROCESS(i).SetSolverValue(350.0 - 7.0 * i);
        m.Q_FLUX(i).SetSolverValue(12.5 * i);
    }
    m.U.SetSolverValue(0.37);
    m.T_COOL.SetSolverValue(41.0);
}

std::vector<double> Values(VX_Session& s) {
    std::vector<double> out;
    for (VX_VarParam* v : s.Columns()) out.push_back(*v->RealSlot());
    return out;
}

TEST(JacobianCheck, Tcool1AgreesAndValuesAreRestored) {
    ScopedSession session;
    VX_RPLUG_TCOOL1 m(true);
    BuildTcool1(m);
    Driven d(m);
    const auto problems = CheckDriverStructure(d.driver);   // numbers the columns
    EXPECT_TRUE(problems.empty()) << (problems.empty() ? "" : problems.front());
    const std::vector<double> before = Values(*session);
    ASSERT_EQ(before.size(), 10u);
    const auto result = CheckDriverJacobian(d.driver);
    EXPECT_TRUE(result.ok());
    EXPECT_EQ(result.entries, 16);
    EXPECT_LT(result.residualEvaluations, 2 * 16);
    EXPECT_EQ(Values(*session), before);
}

TEST(JacobianCheck, TcoolAgrees) {
    ScopedSession session;
    VX_RPLUG_TCOOL m(true);
    SetUser(m.NPTS, VX_Value(4, 0));
    Prepare(m);
    m.T_CELL0.SetSolverValue(310.0);
    for (int i = 1; i <= 4; ++i) {
        m.T_CELL(i).SetSolverValue(310.0 - 9.0 * i);
        m.Q(i).SetSolverValue(0.3 * i);
    }
    for (auto [var, x] : {std::pair<VX_Variable*, double>{&m.U, 0.45}, {&m.T_COOL, 35.0}, {&m.DIAM, 0.04},
                          {&m.NTUBE, 250.0}, {&m.L, 8.0}, {&m.DX, 1.9}})
        var->SetSolverValue(x);
    Driven d(m);
    EXPECT_TRUE(CheckDriverStructure(d.driver).empty());
    const auto result = CheckDriverJacobian(d.driver);
    EXPECT_TRUE(result.ok());
    EXPECT_EQ(result.entries, 42);   // PI and UCF6 are entries of the duty equations too
    EXPECT_EQ(result.failures, 0);
}

TEST(JacobianCheck, CatchesAWrongEntry) {
    ScopedSession session;
    WrongJacobian m(true);
    BuildTcool1(m);
    Driven d(m);
    EXPECT_TRUE(CheckDriverStructure(d.driver).empty());
    const auto result = CheckDriverJacobian(d.driver);
    EXPECT_FALSE(result.ok());
    EXPECT_EQ(result.failures, 1);
    ASSERT_GE(result.worst.size(), 2u);
    EXPECT_EQ(result.worst[0].rowName, "VX_Eqn1");
    EXPECT_EQ(result.worst[0].row, 0);
    EXPECT_EQ(result.worst[0].columnName, "U");
    EXPECT_NEAR(result.worst[0].finiteDifference, -(350.0 - 41.0), 1e-6);
    EXPECT_DOUBLE_EQ(result.worst[0].analytic, -(350.0 - 41.0) * 1.001);
    EXPECT_LE(result.worst[1].scaledError, 1.0);
}

TEST(JacobianCheck, CatchesDeclaredCountsThatThePatternDoesNotGive) {
    ScopedSession session;
    ExtraNonZero m(true);
    BuildTcool1(m);
    const Pattern p = DeclareEquations(m, *session);
    ASSERT_EQ(p.nonzeros, 17);
    EXPECT_EQ(p.patternResult, VX_E_STRUCTURE);
    EXPECT_EQ(p.failure, "wrote 16 entries where SetUpEquations declared 17");
}

}  // namespace
