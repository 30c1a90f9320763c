// The signal selector and the logic comparison: which input reaches the output at the edges of
// the 0.4 tolerance, the comparisons on equal and NaN inputs, the index sets following NSIGNAL
// within one call, and the scripts they hand over.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "model_driver.hpp"
#include "models/control/logiccompare.hpp"
#include "models/control/signalselector.hpp"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Rows {
    std::vector<double> r, jac;
    int status = 0;
    std::string failure;
};

// Sets the model up, then (after before, which may place values the assignments would
// otherwise replace) evaluates its residuals and Jacobian.
Rows Evaluate(VX_ModelType& m, const std::function<void()>& before = {}) {
    Rows out;
    VX_ProtocolDriver d;
    d.AddBlock(m);
    out.status = d.SetDims();
    if (out.status >= 0) out.status = d.ExecuteAssignments(10, VX_CTX_MODEL);
    if (out.status >= 0) out.status = d.SetDims();
    if (out.status >= 0) out.status = d.SetUpEquations();
    if (out.status < 0) {
        out.failure = d.LastFailure().message;
        return out;
    }
    std::vector<int> rows(static_cast<std::size_t>(d.Entries())), cols(rows.size());
    d.JacPattern(rows.data(), cols.data());
    out.r.assign(static_cast<std::size_t>(d.Rows()), 0.0);
    out.jac.assign(rows.size(), 0.0);
    if (before) before();
    out.status = d.Residuals(out.r.data());
    if (out.status >= 0) out.status = d.Jacobian(out.jac.data());
    return out;
}

// A selector with inputs 10, 20, 30 ... (as many as NSIGNAL), SIG all 1 and OUTPUT_ 0, so that
// the residual of SIG(i) is 1 - INPUT_(i) when i is selected and 1 when not.
Rows Select(int nsignal, double selsig, VX_SIGNALSELECTOR& m) {
    SetUser(m.NSIGNAL, VX_Value(nsignal, 0));
    Rows first = Evaluate(m);   // sizes the arrays over the sets the assignments made
    if (first.status < 0) return first;
    for (int i = 1; i <= nsignal; ++i) SetUser(m.INPUT_(i), VX_Value(10.0 * i, 0));
    return Evaluate(m, [&] {
        m.SELSIG.SetSolverValue(selsig);   // NaN too, which a user value may not be
        for (int i = 1; i <= nsignal; ++i) m.SIG(i).SetSolverValue(1.0);
        m.OUTPUT_.SetSolverValue(0.0);
    });
}

TEST(SignalSelector, SelectsTheInputWithinFourTenthsOfSelsig) {
    struct Case {
        int nsignal;
        double selsig;
        int selected;   // 0: none
    } cases[] = {{2, 1.0, 1}, {3, 2.3, 2}, {3, 1.5, 0}, {3, 2.5, 0}, {3, 2.6, 3}, {3, 3.39, 3}, {3, 3.41, 0},
                 {3, kNaN, 0}, {1, 1.0, 1}};
    for (const Case& c : cases) {
        ScopedSession session;
        VX_SIGNALSELECTOR m(true);
        const Rows out = Select(c.nsignal, c.selsig, m);
        ASSERT_GE(out.status, 0) << out.failure;
        ASSERT_EQ(out.r.size(), static_cast<std::size_t>(c.nsignal + 1));
        for (int i = 1; i <= c.nsignal; ++i)
            EXPECT_DOUBLE_EQ(out.r[i - 1], i == c.selected ? 1.0 - 10.0 * i : 1.0) << c.selsig << " row " << i;
        EXPECT_DOUBLE_EQ(out.r.back(), 0.0 - c.nsignal);   // OUTPUT_ - sum of SIG
        // Each SIG row has the entries of both alternatives: SIG(i), then INPUT_(i) (zero when
        // the input is not selected); the sum row has OUTPUT_ and every SIG.
        ASSERT_EQ(out.jac.size(), static_cast<std::size_t>(2 * c.nsignal + 1 + c.nsignal));
        for (int i = 1; i <= c.nsignal; ++i) {
            EXPECT_DOUBLE_EQ(out.jac[2 * (i - 1)], 1.0);
            EXPECT_DOUBLE_EQ(out.jac[2 * (i - 1) + 1], i == c.selected ? -1.0 : 0.0);
        }
    }
}

TEST(SignalSelector, IndexSetsFollowNsignalWithinOneCall) {
    ScopedSession session;
    VX_SIGNALSELECTOR m(true);
    ASSERT_GE(Prepare(m), 0);   // NSIGNAL := 2 runs between the two passes of the sets
    EXPECT_EQ(m.VX_INPUT__SET1.fv().Size(), 2u);
    EXPECT_EQ(m.VX_SIG_SET1.fv().Size(), 2u);
    EXPECT_DOUBLE_EQ(m.SELSIG.Upper(), 2.0);
    SetUser(m.NSIGNAL, VX_Value(4, 0));
    ASSERT_GE(Prepare(m), 0);
    EXPECT_EQ(m.VX_SIG_SET1.fv().Size(), 4u);
    EXPECT_DOUBLE_EQ(m.SELSIG.Upper(), 4.0);
    for (int i = 1; i <= 4; ++i) EXPECT_EQ(m.INPUT_(i).CurrSpec(), VX_SPEC_FIXED) << i;
}

std::wstring Lines(std::initializer_list<const wchar_t*> lines) {
    std::wstring text;
    for (const wchar_t* line : lines) text += std::wstring(line) + L"\n";
    return text;
}

TEST(ControlScripts, AreHandedOverByNameOrIndexAsWritten) {
    const wchar_t* selector = VX_SIGNALSELECTOR::StaticScript("Initialize", 0);
    ASSERT_NE(selector, nullptr);
    EXPECT_EQ(std::wstring(selector).size(), 321u);
    // The script tests i - SELSIG without an absolute value, unlike the equation.
    EXPECT_NE(std::wstring(selector).find(L"  If (i-Selsig.value<0.4) Then\n    Out = In_\n"), std::wstring::npos);
    EXPECT_EQ(VX_SIGNALSELECTOR::StaticScript("INITIALIZE", 7), selector);
    EXPECT_EQ(VX_SIGNALSELECTOR::StaticScript(nullptr, 0), selector);
    EXPECT_EQ(VX_SIGNALSELECTOR::StaticScript(nullptr, 1), nullptr);
    EXPECT_EQ(VX_SIGNALSELECTOR::StaticScript("Run", 0), nullptr);

    const wchar_t* compare = VX_LOGICCOMPARE::StaticScript("initialize", 0);
    ASSERT_NE(compare, nullptr);
    EXPECT_EQ(std::wstring(compare).size(), 478u);
    // The last If has no closing statement.
    const std::wstring ending = Lines({L"", L"If Output_.OutputVariables.Count > 0 Then  ' Only initialize if output is connected",
                                       L"  Output_.value = 0"});
    const std::wstring text(compare);
    EXPECT_EQ(text.substr(text.size() - ending.size()), ending);
    ScopedSession session;
    VX_LOGICCOMPARE m(true);
    EXPECT_EQ(m.Script("Initialize", 0), compare);
}

// The output's residual under each comparison, with OUTPUT_ at 0.25: -0.75 when it holds.
double CompareResidual(const char* comparison, double in1, double in2) {
    ScopedSession session;
    VX_LOGICCOMPARE m(true);
    SetUser(m.LOGICCOMP, VX_Value(comparison, 0));
    const Rows out = Evaluate(m, [&] {
        m.INPUT1.SetSolverValue(in1);
        m.INPUT2.SetSolverValue(in2);
        m.OUTPUT_.SetSolverValue(0.25);
    });
    EXPECT_GE(out.status, 0) << out.failure;
    EXPECT_EQ(out.jac, std::vector<double>{1.0}) << comparison;
    return out.r.size() == 1 ? out.r[0] : kNaN;
}

TEST(LogicCompare, EqualUnequalAndNaNInputs) {
    struct Case {
        const char* comparison;
        bool equal, less, nan;   // holds for 2 vs 2, for 1 vs 2, with a NaN input
    } cases[] = {{"GT", false, false, false}, {"LT", false, true, false}, {"GE", true, false, false},
                 {"LE", true, true, false},   {"EQ", true, false, false}, {"NEQ", false, true, true},
                 {"ge", true, false, false},  {"nEq", false, true, true}};
    for (const Case& c : cases) {
        const auto expect = [](bool holds) { return holds ? -0.75 : 0.25; };
        EXPECT_DOUBLE_EQ(CompareResidual(c.comparison, 2.0, 2.0), expect(c.equal)) << c.comparison;
        EXPECT_DOUBLE_EQ(CompareResidual(c.comparison, 1.0, 2.0), expect(c.less)) << c.comparison;
        EXPECT_DOUBLE_EQ(CompareResidual(c.comparison, kNaN, 2.0), expect(c.nan)) << c.comparison;
        EXPECT_DOUBLE_EQ(CompareResidual(c.comparison, 2.0, kNaN), expect(c.nan)) << c.comparison;
    }
}

TEST(LogicCompare, AComparisonOutsideTheSixIsRefusedByName) {
    ScopedSession session;
    VX_LOGICCOMPARE m(true);
    std::string why;
    EXPECT_EQ(m.LOGICCOMP.AssignUser(VX_ATTR_VALUE, VX_Value("GREATER", 0), &why), VX_AS_REFUSED);
    EXPECT_NE(why.find("GREATER"), std::string::npos) << why;
    EXPECT_EQ(SUValue::CompareCI(m.LOGICCOMP.fv(), "GT"), 0);   // unchanged
}

}  // namespace
