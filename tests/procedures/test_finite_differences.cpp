// Jacobian rows of routines without derivatives: the step, how bounds bend it, the overflow
// rule, and failures on a perturbed call.
#include <cmath>
#include <limits>

#include "procedure_test_support.hpp"
#include "test_declarations.hpp"

namespace {

using zx_test::Calls;
using zx_test::LastInput;
using zx_test::ProcedureTest;

constexpr double kLargest = std::numeric_limits<double>::max();

class SquareByDifferences : public ProcedureTest {
protected:
    void SetUp() override {
        ProcedureTest::SetUp();
        model.calls.push_back([this](bool counting) {
            auto* p = new VXProc_ZXT_SQUARE_FD(counting, 0);
            p->Argument(x);
            p->Argument(y);
            return p;
        });
    }
    // The procedure row's derivative entry after one residual and one Jacobian pass.
    double Entry() {
        EXPECT_EQ(Declare(), 3);
        Residuals();
        return Jacobian()[2];
    }
    // -(f(x') - f(x)) / h for the square, as the runtime computes it.
    static double Expected(double x, double moved, double h) { return -((moved * moved - x * x) / h); }

    VX_REALVARIABLE& x = Var(3.0);
    VX_REALVARIABLE& y = Var(0.0);
};

TEST_F(SquareByDifferences, StepIsRelativeAboveOneAndAbsoluteBelow) {
    for (double at : {3.0, -250.0, 0.5, 0.0}) {
        x.SetSolverValue(at);
        const double h = std::fabs(at) > 1 ? std::fabs(at) * 1e-6 : 1e-6;
        EXPECT_EQ(Entry(), Expected(at, at + h, h)) << at;
        EXPECT_EQ(LastInput(), at + h) << at;
        EXPECT_EQ(x.fv(), at) << "restored";
    }
}

TEST_F(SquareByDifferences, AtTheUpperBoundTheStepGoesDown) {
    Bound(x, 0.0, 3.0);
    const double h = -3e-6;
    EXPECT_EQ(Entry(), Expected(3.0, 3.0 + h, h));
    EXPECT_EQ(LastInput(), 3.0 + h);
}

TEST_F(SquareByDifferences, BoundsCloserThanTheStepSendItToTheFartherBound) {
    Bound(x, 3.0 - 1e-7, 3.0 + 2e-7);
    const double hi = 3.0 + 2e-7;
    EXPECT_EQ(Entry(), Expected(3.0, hi, hi - 3.0));
    EXPECT_EQ(LastInput(), hi);
}

// Towards a farther lower bound the step keeps a positive h although the value went down, so
// the entry has the sign of the opposite slope. This is how the binding has always behaved.
TEST_F(SquareByDifferences, TowardsTheLowerBoundTheStepKeepsAPositiveSign) {
    Bound(x, 3.0 - 2e-7, 3.0 + 1e-7);
    const double lo = 3.0 - 2e-7;
    const double entry = Entry();
    EXPECT_EQ(entry, -((lo * lo - 9.0) / (3.0 - lo)));
    EXPECT_GT(entry, 5.9);   // the true derivative of the residual is about -6
    EXPECT_EQ(LastInput(), lo);
}

TEST_F(SquareByDifferences, AnInputPinnedByItsBoundsGetsAZeroColumnWithoutACall) {
    Bound(x, 3.0, 3.0);
    EXPECT_EQ(Entry(), 0.0);
    EXPECT_EQ(Calls(), 1);
}

TEST_F(SquareByDifferences, TheUnperturbedPointNeedsNoFurtherCall) {
    EXPECT_EQ(Declare(), 3);
    Residuals();
    Jacobian();
    EXPECT_EQ(Calls(), 2);   // the point, then one perturbation
    EXPECT_EQ(Residuals()[1], -9.0);
    Jacobian();
    EXPECT_EQ(Calls(), 3);   // only the perturbation again
}

class CliffByDifferences : public ProcedureTest {
protected:
    void SetUp() override {
        ProcedureTest::SetUp();
        model.calls.push_back([this](bool counting) {
            auto* p = new VXProc_ZXT_CLIFF(counting, 0);
            p->Argument(x1);
            p->Argument(x2);
            p->Argument(y);
            return p;
        });
        ASSERT_EQ(Declare(), 3);
    }
    VX_REALVARIABLE& x1 = Var(0.0);
    VX_REALVARIABLE& x2 = Var(1.0);
    VX_REALVARIABLE& y = Var(0.0);
};

TEST_F(CliffByDifferences, DifferencesBeyondTheLargestNumberAreClipped) {
    Residuals();
    EXPECT_EQ(Jacobian()[2], -kLargest);   // h and d both positive
    // Down to a farther lower bound: h stays positive, d is negative.
    x1.SetSolverValue(1e-9);
    Bound(x1, -2e-9, 1.5e-9);
    Residuals();
    EXPECT_EQ(Jacobian()[2], kLargest);
}

TEST_F(CliffByDifferences, AFailedPerturbationLeavesItsColumnAndKeepsTheFirstFailure) {
    x1.SetSolverValue(-0.5);
    Bound(x1, -1.0, -0.5);   // the step goes down, below -0.5
    Residuals();
    std::vector<double> j(5, -99.0);
    EXPECT_EQ(model.Jacobian(j.data(), 0, 0), VX_E_ROUTINE_FAILED);
    EXPECT_EQ(j[1], 1.0);
    EXPECT_EQ(j[2], -99.0);   // x1's column is not written
    EXPECT_EQ(j[3], -((1.0 + 1e-6) - 1.0) / 1e-6);
    EXPECT_NE(session->LastFailure().message.find("input below -0.5"), std::string::npos) << session->LastFailure().message;
    EXPECT_EQ(x1.fv(), -0.5);
}

}  // namespace
