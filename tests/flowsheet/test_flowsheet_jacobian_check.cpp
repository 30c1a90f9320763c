// The Jacobian check of a whole flowsheet finds wrong entries and dependences a block does not
// declare, and passes correct models.
#include "flowsheet_test_support.hpp"

#include "flowsheet/flowsheet_jacobian_check.hpp"

namespace zx::flowsheet {
namespace {

// Two equations with two faults:
//   VX_Eqn1: Y - X^2 - W = 0, whose X entry is written as -3X instead of -2X;
//   VX_Eqn2: Z - 2W = 0, which declares Z only.
class VX_FAULTY_MODEL : public VX_GENERICMODEL {
public:
    VX_FAULTY_MODEL() : VX_GENERICMODEL(false), X(true), Y(true), W(true), Z(true) {
        VX_GENERICMODEL::Construct();
        VX_Type::AddProperty(&X, this, "X", nullptr, 0, 0);
        VX_Type::AddProperty(&Y, this, "Y", nullptr, 0, 0);
        VX_Type::AddProperty(&W, this, "W", nullptr, 0, 0);
        VX_Type::AddProperty(&Z, this, "Z", nullptr, 0, 0);
    }
    int SetUpEquations() override {
        int n = VX_GENERICMODEL::SetUpEquations();
        m_first = VX_ModelType::m_stLastGroup;
        SetGroupLimits(m_first + 1);
        ++n;
        AddNonZero(Y);
        AddNonZero(X);
        AddNonZero(W);
        SetGroupLimits(m_first + 2);
        ++n;
        AddNonZero(Z);
        return SetLocalEqnCount(n);
    }
    int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override {
        const int n = VX_GENERICMODEL::JacPattern(rows, cols, types);
        int e = AddEquation("VX_Eqn1", types);
        AddTerm(Y, rows, cols, e);
        AddTerm(X, rows, cols, e);
        AddTerm(W, rows, cols, e);
        e = AddEquation("VX_Eqn2", types);
        AddTerm(Z, rows, cols, e);
        return n + 4;
    }
    int Residuals(double* r, int group, int start) override {
        int i = VX_GENERICMODEL::Residuals(r, group, start);
        r[i++] = Y.fv() - X.fv() * X.fv() - W.fv();
        r[i++] = Z.fv() - 2.0 * W.fv();
        return i;
    }
    int Jacobian(double* v, int group, int start) override {
        int i = VX_GENERICMODEL::Jacobian(v, group, start);
        v[i++] = 1.0;
        v[i++] = -3.0 * X.fv();
        v[i++] = -1.0;
        v[i++] = 1.0;
        return i;
    }
    VX_REALVARIABLE X, Y, W, Z;
    int m_first = 0;
};

VX_Type* CreateWithFaulty(const std::string& type, std::string& error) {
    if (type != "FAULTY") return testing::CreateBlock(type, error);
    auto* m = new VX_FAULTY_MODEL();
    m->AddRef();
    return m;
}

TEST(FlowsheetJacobianCheck, FindsWrongAndUndeclaredEntries) {
    // Beside a correct block, so that rows and columns of several blocks are involved.
    testing::SetUpSheet s(R"({"blocks": {"OK": {"type": "RPLUG_TCOOL", "set": {"NPTS": 3}},
                            "BAD": {"type": "FAULTY", "set": {"X": 2, "W": 0.5}}}})",
                          CreateWithFaulty);
    const JacobianCheckResult r = CheckJacobian(*s.system, JacobianCheckOptions{});
    EXPECT_FALSE(r.evaluationFailed);
    EXPECT_EQ(r.failures, 2);
    ASSERT_GE(r.worst.size(), 2u);
    // The undeclared entry d(VX_Eqn2)/dW = -2 is off by all of it, the wrong one -6 against -4 by a third.
    EXPECT_FALSE(r.worst[0].declared);
    EXPECT_EQ(r.worst[0].rowName, "BAD VX_Eqn2 #1 (row 5)");
    EXPECT_EQ(s.system->EquationName(r.worst[0].row), r.worst[0].rowName);
    EXPECT_EQ(r.worst[0].columnName, "BAD.W");
    EXPECT_NEAR(r.worst[0].finiteDifference, -2.0, 1e-6);
    EXPECT_TRUE(r.worst[1].declared);
    EXPECT_DOUBLE_EQ(r.worst[1].analytic, -6.0);
    EXPECT_NEAR(r.worst[1].finiteDifference, -4.0, 1e-6);
    // Far fewer evaluations than two per column.
    EXPECT_LT(r.residualEvaluations, 2 * r.columns);
}

TEST(FlowsheetJacobianCheck, CoolantModelsPassAndTheCommandSaysSo) {
    testing::TempFile file(R"({"blocks": {"A": {"type": "RPLUG_TCOOL", "set": {"NPTS": 40, "U": 0.3, "T_CELL": {"value": 80}}},
                              "B": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 40, "CTYPE": "TCool-Prof", "U": 3,
                                    "T_COOL_": {"value": 20}, "T_PROCESS": {"value": 70}}}}})");
    CheckJacobianCommandOptions options;
    options.file = file.Path();
    std::ostringstream out, err;
    EXPECT_EQ(RunCheckJacobian(options, testing::CreateBlock, out, err), kExitOk) << out.str() << err.str();
    EXPECT_NE(out.str().find("all entries agree within"), std::string::npos) << out.str();
}

}  // namespace
}  // namespace zx::flowsheet
