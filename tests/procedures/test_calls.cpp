// When the routine is called, what its results become, and what happens when it fails.
#include <cmath>
#include <limits>

#include "procedure_test_support.hpp"
#include "test_declarations.hpp"

namespace {

using zx_test::Calls;
using zx_test::ProcedureTest;

class SquareCall : public ProcedureTest {
protected:
    void SetUp() override {
        ProcedureTest::SetUp();
        model.A.SetSolverValue(2.0);
        model.B.SetSolverValue(3.0);
        model.calls.push_back([this](bool counting) -> VX_ProcedureType* {
            if (sparse) {
                auto* p = new VXProc_ZXT_SPARSE(counting, 0);
                p->Argument(x);
                p->Argument(y);
                return p;
            }
            auto* p = new VXProc_ZXT_SQUARE(counting, 0);
            p->Argument(x);
            p->Argument(y);
            return p;
        });
    }
    VX_ProcedureType& Proc() { return *model.ProcedureEquation(model.CallGroup(), 0); }

    bool sparse = false;
    VX_REALVARIABLE& x = Var(3.0);
    VX_REALVARIABLE& y = Var(10.0);
};

TEST_F(SquareCall, OneCallServesTheResidualAndTheJacobianPass) {
    for (bool s : {false, true}) {
        sparse = s;
        zx_test::ResetRoutines();
        ASSERT_EQ(Declare(), 3) << session->LastFailure().message;
        EXPECT_EQ(Residuals(), (std::vector<double>{0.0, 1.0, 0.0})) << "sparse " << s;
        EXPECT_EQ(Jacobian(), (std::vector<double>{1.0, 1.0, -6.0, 1.0})) << "sparse " << s;
        EXPECT_EQ(Calls(), 1) << "sparse " << s;
        EXPECT_EQ(zx_test::LastCallType(), VX_CALL_DERIVATIVES);
    }
}

TEST_F(SquareCall, NoCallWhileNoInputChanges) {
    ASSERT_EQ(Declare(), 3);
    Residuals();
    Jacobian();
    Residuals();
    EXPECT_EQ(Calls(), 1);
    y.SetSolverValue(4.0);   // an output changed, no input did
    EXPECT_EQ(Residuals()[1], -5.0);
    EXPECT_EQ(Calls(), 1);
    x.SetSolverValue(-2.0);
    EXPECT_EQ(Residuals()[1], 0.0);
    EXPECT_EQ(Jacobian()[2], 4.0);
    EXPECT_EQ(Calls(), 2);
}

TEST_F(SquareCall, ANaNInputIsAlwaysAChange) {
    ASSERT_EQ(Declare(), 3);
    x.SetSolverValue(std::numeric_limits<double>::quiet_NaN());
    // Unchecked calls, so that the NaN the routine returns is not itself a failure.
    EXPECT_EQ(Proc().CallFn(VX_CALL_VALUES, false), VX_S_OK);
    EXPECT_EQ(Proc().CallFn(VX_CALL_VALUES, false), VX_S_OK);
    EXPECT_EQ(Calls(), 2);
    x.SetSolverValue(1.0);
    EXPECT_EQ(Proc().CallFn(VX_CALL_VALUES, false), VX_S_OK);
    EXPECT_EQ(Proc().CallFn(VX_CALL_VALUES, false), VX_S_OK);
    EXPECT_EQ(Calls(), 3);
}

TEST_F(SquareCall, PrepareAndInitialiseCallsAreMadeOnceEach) {
    ASSERT_EQ(Declare(), 3);
    EXPECT_EQ(Proc().CallFn(VX_CALL_PREPARE, true), VX_S_OK);
    EXPECT_EQ(zx_test::LastCallType(), VX_CALL_PREPARE);
    EXPECT_EQ(Proc().CallFn(VX_CALL_PREPARE, true), VX_S_OK);
    EXPECT_EQ(Calls(), 1);
    EXPECT_EQ(Proc().CallFn(VX_CALL_INITIALISE, true), VX_S_OK);
    EXPECT_EQ(Proc().CallFn(VX_CALL_INITIALISE, true), VX_S_OK);
    EXPECT_EQ(Calls(), 2);
    Residuals();   // a values call after them is a new call, though no input changed
    EXPECT_EQ(Calls(), 3);
    zx_test::SetFailure(1);
    x.SetSolverValue(5.0);
    EXPECT_EQ(Proc().CallFn(VX_CALL_VALUES, true), VX_E_ROUTINE_FAILED);
    EXPECT_EQ(Proc().CallFn(VX_CALL_INITIALISE, true), VX_S_OK);   // not after a failed call
    EXPECT_EQ(Calls(), 4);
    EXPECT_EQ(Proc().CallFn(7, true), VX_E_INVALIDARG);
}

TEST_F(SquareCall, AFailingRoutineKeepsTheRowsAndPassesItsStatusUp) {
    ASSERT_EQ(Declare(), 3);
    zx_test::SetFailure(1);
    std::vector<double> r = Residuals(VX_E_ROUTINE_FAILED);
    EXPECT_EQ(r[0], 0.0);     // written before the call statement
    EXPECT_EQ(r[1], -99.0);   // the failed output's row is left as it was
    int k = 1;
    EXPECT_EQ(Proc().Residuals(r.data(), k), VX_E_ROUTINE_FAILED);
    EXPECT_EQ(k, 2);   // advanced past its outputs
    const std::string& why = session->LastFailure().message;
    EXPECT_NE(why.find("procedure ZXT_SQUARE in equation CALL (library \"ZxTestRoutines\", entry point \"ZXT_square\")"),
              std::string::npos) << why;
    EXPECT_NE(why.find("status 0: ZXT_square: told to fail"), std::string::npos) << why;
    // The Jacobian rows are still written in place, and the failure is returned.
    std::vector<double> j(4, -99.0);
    int at = 1;
    EXPECT_EQ(Proc().Jacobian(j.data(), at), VX_E_ROUTINE_FAILED);
    EXPECT_EQ(at, 3);
    EXPECT_EQ(j[1], 1.0);
    // A routine that fails without a word still gives its status.
    zx_test::SetFailure(4);
    Residuals(VX_E_ROUTINE_FAILED);
    EXPECT_NE(session->LastFailure().message.find("status -7"), std::string::npos) << session->LastFailure().message;
    // Once it works again, the same inputs are tried again: a failure is never kept as a result.
    zx_test::SetFailure(0);
    EXPECT_EQ(Residuals()[1], 1.0);
}

TEST_F(SquareCall, NonFiniteOutputsAndDerivativesAreRefused) {
    ASSERT_EQ(Declare(), 3);
    zx_test::SetFailure(2);
    Residuals(VX_E_ROUTINE_NONFINITE);
    EXPECT_NE(session->LastFailure().message.find("returned nan for output element 1 (equation [1])"), std::string::npos)
        << session->LastFailure().message;
    zx_test::SetFailure(3);
    Residuals(VX_E_ROUTINE_NONFINITE);   // the residual pass asks for derivatives too
    EXPECT_NE(session->LastFailure().message.find("derivative inf of output element 1 with respect to input element 1"), std::string::npos)
        << session->LastFailure().message;
    EXPECT_NE(session->LastFailure().message.find("procedure ZXT_SQUARE"), std::string::npos);
    std::vector<double> j(4, 0.0);
    EXPECT_EQ(model.Jacobian(j.data(), 0, 0), VX_E_ROUTINE_NONFINITE);
    for (double v : j) EXPECT_TRUE(std::isfinite(v));
}

TEST_F(ProcedureTest, ProceduresWithoutInputsAreCalledEveryTime) {
    VX_REALVARIABLE& y = Var(0.0);
    model.calls.push_back([&](bool counting) {
        auto* p = new VXProc_ZXT_COUNT(counting, 0);
        p->Argument(y);
        return p;
    });
    ASSERT_EQ(Declare(), 3);
    EXPECT_EQ(Residuals()[1], -1.0);
    EXPECT_EQ(Residuals()[1], -2.0);
    EXPECT_EQ(Jacobian(), (std::vector<double>{1.0, 1.0, 1.0}));
    EXPECT_EQ(Calls(), 3);
}

TEST_F(ProcedureTest, ConstantsArePackedByType) {
    VX_REALVARIABLE &x = Var(0.25), &y = Var(0.0);
    model.calls.push_back([&](bool counting) {
        auto* p = new VXProc_ZXT_CONSTANTS(counting, 0);
        p->Argument(40);
        p->Argument(1.5);
        p->Argument("ABCD");
        p->Argument(x);
        p->Argument(y);
        return p;
    });
    ASSERT_EQ(Declare(), 3);
    EXPECT_EQ(Residuals()[1], -(40 + 1.5 + 4 + 0.25));
}

TEST_F(ProcedureTest, ArraysAndSeveralOutputsGetAnalyticRows) {
    VX_REALVARIABLE &t = Var(2.0), &x1 = Var(1.0), &x2 = Var(3.0), &y1 = Var(0.0), &z1 = Var(0.0), &z2 = Var(0.0);
    model.calls.push_back([&](bool counting) {
        auto* p = new VXProc_ZXT_PROFILE(counting, 0);
        p->Argument(t);
        p->Argument();
        p->SetDimensionSize(2);
        p->Element(x1);
        p->Element(x2);
        p->Argument(y1);
        p->Argument();
        p->SetDimensionSize(2);
        p->Element(z1);
        p->Element(z2);
        return p;
    });
    ASSERT_EQ(Declare(), 5);
    const auto r = Residuals();
    EXPECT_EQ(std::vector<double>(r.begin() + 1, r.begin() + 4), (std::vector<double>{-8.0, -4.0, -12.0}));
    // Rows of y1 = T*(x1+x2) and z_i = x_i*T^2: 1, then -d/dT, -d/dx1, -d/dx2.
    const auto j = Jacobian();
    EXPECT_EQ(std::vector<double>(j.begin() + 1, j.begin() + 13),
              (std::vector<double>{1, -4, -2, -2, 1, -4, -4, 0, 1, -12, 0, -4}));
}

// A declaration may ask for the values a routine leaves in its written-back inputs.
class WriteBackCounter : public VX_IncrementalUpdate {
public:
    void InputWrittenBack(VX_VarParam& e) override { told.push_back(&e); }
    std::vector<VX_VarParam*> told;
};

TEST_F(ProcedureTest, WrittenBackInputsReachTheModelAndTheUpdateController) {
    VX_REALVARIABLE &x = Var(3.0), &y = Var(0.0);
    VX_STRINGPARAMETER s(true);
    s.AssignUser(VX_ATTR_VALUE, VX_Value("ABC", 0));
    WriteBackCounter counter;
    model.calls.push_back([&](bool counting) {
        auto* p = new VXProc_ZXT_WRITEBACK(counting, 0);
        p->SetUpdateController(&counter);
        p->Argument(x);
        p->Argument(s);
        p->Argument(y);
        return p;
    });
    ASSERT_EQ(Declare(), 3);
    Residuals();
    EXPECT_EQ(x.fv(), 6.0);
    EXPECT_STREQ(s.fv(), "CHANGED");
    EXPECT_EQ(counter.told, (std::vector<VX_VarParam*>{&x, &s}));
    EXPECT_EQ(x.SourceOf(VX_ATTR_VALUE), VX_SRC_MODEL);   // it held its default: now assigned
}

TEST_F(ProcedureTest, RoutinesLearnTheModelsComponentList) {
    session->DefineComponentList("OTHER", {"N2"});
    session->DefineComponentList("LIQUIDS", {"WATER", "METHANOL"}, {{"kbase", SUValue(2)}});
    model.ComponentList()->AssignUser(VX_ATTR_VALUE, VX_Value("liquids", 0));
    VX_REALVARIABLE &x = Var(1.0), &count = Var(0.0), &kbase = Var(0.0);
    model.calls.push_back([&](bool counting) {
        auto* p = new VXProc_ZXT_COMPONENTS(counting, 0, model.ComponentList());
        p->Argument(x);
        p->Argument(count);
        p->Argument(kbase);
        return p;
    });
    ASSERT_EQ(Declare(), 4);
    const auto r = Residuals();
    EXPECT_EQ(r[1], -(2 + 100 * 5));   // two components, the first "WATER"
    EXPECT_EQ(r[2], -2.0);
}

}  // namespace
