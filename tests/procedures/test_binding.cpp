// Sizing and binding: offsets, dimension lists, buffer layout, counts, equations and their
// names, and argument sequences that do not match their declaration.
#include "procedure_test_support.hpp"
#include "test_declarations.hpp"

namespace {

using zx_test::ProcedureTest;

TEST(ProcedureSizing, OffsetsAndDimensionListsFollowTheArguments) {
    ScopedSession session;
    VX_REALVARIABLE t(true), p(true), h(true);
    std::vector<std::unique_ptr<VX_REALVARIABLE>> x;
    for (int i = 0; i < 3; ++i) x.push_back(std::make_unique<VX_REALVARIABLE>(true));
    // qelp's liquid enthalpy: T, P, x over three components -> h.
    VXProc_PENTH_MOL_LIQ proc(false, 0, nullptr);
    proc.Argument(t);
    proc.Argument(p);
    proc.Argument();
    proc.SetDimensionSize(3);
    for (auto& e : x) proc.Element(*e);
    proc.Argument(h);
    proc.LastArgument();
    // Words: T 0, P 1, x 2..4, h 5; offsets count from 1 in the Fortran flavour.
    EXPECT_EQ(*proc.GetOffsets(0), 1);
    EXPECT_EQ(*proc.GetOffsets(2), 3);
    EXPECT_EQ(proc.GetOffset(3), 5);
    EXPECT_EQ(proc.BufferWords(), 6);
    EXPECT_EQ(proc.DimensionSizes()[0], 3);
    EXPECT_EQ(proc.FirstOutputDimension(), 1);
    EXPECT_EQ(proc.InputElements(), 5);
    EXPECT_EQ(proc.ReferencedInputElements(), 5);
    EXPECT_EQ(proc.VariableInputElements(), 5);
    EXPECT_EQ(proc.OutputElements(), 1);
    EXPECT_TRUE(proc.ByReference(2));
}

TEST(ProcedureSizing, CStringArraysStartWithAPointerTable) {
    zx_test::RoutinePath path;
    ScopedSession session;
    VX_STRINGPARAMETER s(true), a(true), b(true), c(true);
    VX_REALVARIABLE y(true);
    s.AssignUser(VX_ATTR_VALUE, VX_Value("scalar", 0));
    a.AssignUser(VX_ATTR_VALUE, VX_Value("AB", 0));
    b.AssignUser(VX_ATTR_VALUE, VX_Value("", 0));
    c.AssignUser(VX_ATTR_VALUE, VX_Value("a string far longer than forty characters in all", 0));
    VXProc_ZXT_CSTRINGS proc(false, 0);
    proc.Argument(s);
    proc.Argument();
    proc.SetDimensionSize(3);
    proc.Element(a);
    proc.Element(b);
    proc.Element(c);
    proc.Argument(4);
    proc.Argument(y);
    proc.LastArgument();
    EXPECT_FALSE(proc.IsFortran());
    // Offsets from 0: the scalar string 0..4, the table of three pointers 5..7, strings 8..22.
    EXPECT_EQ(*proc.GetOffsets(1), 5);
    EXPECT_EQ(*proc.GetOffsets(2), 5 + 3 + 15);
    EXPECT_EQ(proc.CallFn(VX_CALL_VALUES, true), VX_S_OK) << session->LastFailure().message;
    // The routine checked the table and the NUL ends: 6 + 2 + 0 + 39 characters, 3 strings, 4.
    EXPECT_EQ(proc.Buffer()[proc.GetOffset(3)], 47 + 3000 + 4);
    const char* const* table = reinterpret_cast<const char* const*>(proc.Buffer() + 5);
    EXPECT_STREQ(table[0], "AB");
    EXPECT_EQ(std::string(table[2]).size(), 39u);
}

TEST_F(ProcedureTest, EquationsAreNamedByOutputArgumentAndElement) {
    VX_REALVARIABLE& t = Var(2.0);
    std::vector<VX_REALVARIABLE*> x{&Var(1.0), &Var(2.0), &Var(3.0)}, y2{&Var(0.0), &Var(0.0), &Var(0.0)};
    VX_REALVARIABLE& y1 = Var(0.0);
    model.calls.push_back([&](bool counting) {
        auto* p = new VXProc_ZXT_PROFILE(counting, 0);
        p->Argument(t);
        p->Argument();
        p->SetDimensionSize(3);
        for (auto* e : x) p->Element(*e);
        p->Argument(y1);
        p->Argument();
        p->SetDimensionSize(3);
        for (auto* e : y2) p->Element(*e);
        return p;
    });
    ASSERT_EQ(Declare(), 6) << session->LastFailure().message;
    // Rows: VX_Eqn1, [1], [2_1], [2_2], [2_3], VX_Eqn3.
    const char* expected[] = {"VX_Eqn1", "[1]", "[2_1]", "[2_2]", "[2_3]", "VX_Eqn3"};
    for (int k = 0; k < 6; ++k) EXPECT_STREQ(model.RowLabel(k), expected[k]) << k;
    // Per procedure row: the output and the four solver-variable inputs.
    EXPECT_EQ(pattern.nonzeros, 1 + 4 * 5 + 1);
    EXPECT_EQ(pattern.patternResult, pattern.nonzeros);
    ASSERT_EQ(model.Groups().size(), 3u);
    EXPECT_EQ(model.Groups()[1].equations, 4);
    EXPECT_EQ(model.Groups()[1].nonzeros, 20);
    // Row 2 ([2_1]): the output y2(1), then T and x(1..3), all in row 2.
    for (int k = 6; k < 11; ++k) EXPECT_EQ(pattern.rows[static_cast<std::size_t>(k)], 2);
    EXPECT_EQ(session->Columns()[static_cast<std::size_t>(pattern.cols[6])], y2[0]);
    EXPECT_EQ(session->Columns()[static_cast<std::size_t>(pattern.cols[7])], &t);
}

TEST_F(ProcedureTest, ParametersAreInputsButNotJacobianColumns) {
    VX_REALPARAMETER p(true);
    p.AssignUser(VX_ATTR_VALUE, VX_Value(3.0, 0));
    VX_REALVARIABLE& y = Var(0.0);
    model.calls.push_back([&](bool counting) {
        auto* proc = new VXProc_ZXT_SQUARE(counting, 0);
        proc->Argument(p);
        proc->Argument(y);
        return proc;
    });
    ASSERT_EQ(Declare(), 3);
    EXPECT_EQ(pattern.nonzeros, 3);   // A, y, B
    EXPECT_EQ(Residuals()[1], -9.0);
    EXPECT_EQ(Jacobian(), (std::vector<double>{1.0, 1.0, 1.0}));
}

TEST_F(ProcedureTest, GroupsSkipProcedureRowsLikeOrdinaryOnes) {
    VX_REALVARIABLE &x = Var(3.0), &y = Var(10.0);
    model.A.SetSolverValue(5.0);
    model.B.SetSolverValue(7.0);
    model.calls.push_back([&](bool counting) {
        auto* p = new VXProc_ZXT_SQUARE(counting, 0);
        p->Argument(x);
        p->Argument(y);
        return p;
    });
    ASSERT_EQ(Declare(), 3);
    std::vector<double> r(3, 0.0), j(5, 0.0);
    EXPECT_EQ(model.Residuals(r.data(), model.firstGroup + 3, 0), 3);
    EXPECT_EQ(r, (std::vector<double>{0.0, 0.0, 4.0}));
    EXPECT_EQ(model.Residuals(r.data(), model.CallGroup(), 0), 3);
    EXPECT_EQ(r[1], 1.0);
    EXPECT_EQ(model.Jacobian(j.data(), model.firstGroup + 3, 0), 4);
    EXPECT_EQ(j[3], 1.0);
    EXPECT_EQ(j[1], 0.0);   // the procedure's entries were skipped, not written
    EXPECT_EQ(zx_test::Calls(), 1);
}

// Sequences a generator could get wrong: each is refused with a line saying what was wrong, and
// nothing is written outside the procedure's tables.
TEST_F(ProcedureTest, ArgumentSequencesThatDoNotMatchAreRefused) {
    VX_REALVARIABLE &x = Var(1.0), &y = Var(0.0), &z = Var(0.0);
    VX_STRINGPARAMETER text(true);
    struct Case {
        const char* what;
        std::function<void(VX_ProcedureType&)> args;
        const char* says;
    };
    const std::vector<Case> cases{
        {"too few", [&](VX_ProcedureType& p) { p.Argument(x); }, "1 of its 2 arguments given"},
        {"too many", [&](VX_ProcedureType& p) { p.Argument(x); p.Argument(y); p.Argument(z); }, "more arguments given than the 2"},
        {"constant output", [&](VX_ProcedureType& p) { p.Argument(x); p.Argument(2.0); }, "output 1 is given a constant"},
        {"string for a real", [&](VX_ProcedureType& p) { p.Argument(text); p.Argument(y); }, "the declaration wants a real"},
        {"scalar opened as array", [&](VX_ProcedureType& p) { p.Argument(); p.SetDimensionSize(1); p.Element(x); p.Argument(y); },
         "input 1 is a scalar, opened as an array"},
        {"two elements for a scalar", [&](VX_ProcedureType& p) { p.Argument(x); p.Element(z); p.Argument(y); },
         "input 1: 2 elements given"},
    };
    for (const Case& c : cases) {
        model.calls.assign(1, [&](bool counting) {
            auto* p = new VXProc_ZXT_SQUARE(counting, 0);
            c.args(*p);
            return p;
        });
        EXPECT_EQ(Declare(), VX_E_PROCEDURE_BINDING) << c.what;
        EXPECT_NE(session->LastFailure().message.find(c.says), std::string::npos) << c.what << ": " << session->LastFailure().message;
        EXPECT_NE(session->LastFailure().message.find("procedure ZXT_SQUARE"), std::string::npos) << c.what;
    }
}

TEST_F(ProcedureTest, ArrayElementCountsMustMatchTheirSizes) {
    VX_REALVARIABLE &t = Var(1.0), &x = Var(1.0), &y1 = Var(0.0), &y2 = Var(0.0);
    model.calls.push_back([&](bool counting) {
        auto* p = new VXProc_ZXT_PROFILE(counting, 0);
        p->Argument(t);
        p->Argument();
        p->SetDimensionSize(2);
        p->Element(x);   // one of two
        p->Argument(y1);
        p->Argument();
        p->SetDimensionSize(1);
        p->Element(y2);
        return p;
    });
    EXPECT_EQ(Declare(), VX_E_PROCEDURE_BINDING);
    EXPECT_NE(session->LastFailure().message.find("input 2: 1 elements given, its dimension sizes make 2"), std::string::npos)
        << session->LastFailure().message;
}

// The kept instance may also be bound by repeating the argument sequence after LastArgument.
TEST_F(ProcedureTest, RepeatingTheArgumentsBindsAgain) {
    VX_REALVARIABLE &x = Var(3.0), &y = Var(0.0), &other = Var(4.0);
    VXProc_ZXT_SQUARE p(false, 0);
    p.Argument(x);
    p.Argument(y);
    p.LastArgument();
    p.Argument(other);
    p.Argument(y);
    p.LastArgument();
    ASSERT_EQ(p.CallFn(VX_CALL_VALUES, true), VX_S_OK) << session->LastFailure().message;
    EXPECT_EQ(p.Buffer()[p.GetOffset(1)], 16.0);
}

TEST_F(ProcedureTest, AModelTakesEachProcedureOnce) {
    VX_REALVARIABLE &x = Var(3.0), &y = Var(0.0);
    auto* p = new VXProc_ZXT_SQUARE(false, 0);
    p->Argument(x);
    p->Argument(y);
    p->LastArgument();
    EXPECT_EQ(p->CreateEquationsAndSetGroup(&model, 5, "CALL"), VX_S_OK);
    EXPECT_EQ(p->CreateEquationsAndSetGroup(&model, 5, "CALL"), VX_E_PROCEDURE_BINDING);
    EXPECT_EQ(model.ProcedureEquation(5, 0), p);
    EXPECT_EQ(model.ProcedureEquation(5, 1), nullptr);   // freed once, with the model
}

}  // namespace
