// The signal selector and the logic comparison: which input reaches the output at the edges of
// the 0.4 tolerance, comparisons of equal and NaN inputs, the index sets following NSIGNAL
// within one call, and the scripts they hand over.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "model_driver.hpp"
#include "models/control/logiccompare.hpp"
#include "models/control/signalselector.hpp"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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
        BlockUnderTest b(m, [&] { SetUser(m.NSIGNAL, VX_Value(c.nsignal, 0)); });
        ASSERT_GE(b.status, 0) << b.Failure();
        // Inputs 10, 20, ..., every SIG 1: a SIG row is 1 - INPUT_(i) when i is selected, else 1.
        m.SELSIG.SetSolverValue(c.selsig);
        for (int i = 1; i <= c.nsignal; ++i) {
            m.INPUT_(i).SetSolverValue(10.0 * i);
            m.SIG(i).SetSolverValue(1.0);
        }
        m.OUTPUT_.SetSolverValue(0.0);
        const auto r = b.Residuals();
        const auto jac = b.Jacobian();
        ASSERT_EQ(r.size(), static_cast<std::size_t>(c.nsignal + 1));
        EXPECT_DOUBLE_EQ(r.back(), -c.nsignal);   // OUTPUT_ - the sum of SIG
        // Each SIG row has the entries of both alternatives: SIG(i), then INPUT_(i).
        for (int i = 1; i <= c.nsignal; ++i) {
            const bool selected = i == c.selected;
            EXPECT_DOUBLE_EQ(r[i - 1], selected ? 1.0 - 10.0 * i : 1.0) << c.selsig << " row " << i;
            EXPECT_DOUBLE_EQ(jac[2 * (i - 1) + 1], selected ? -1.0 : 0.0) << c.selsig << " row " << i;
        }
    }
}

TEST(SignalSelector, IndexSetsFollowNsignalWithinOneCall) {
    ScopedSession session;
    VX_SIGNALSELECTOR m(true);
    ASSERT_GE(Prepare(m), 0);   // NSIGNAL := 2 runs between the two passes of the sets
    EXPECT_EQ(m.VX_SIG_SET1.fv().Size(), 2u);
    SetUser(m.NSIGNAL, VX_Value(4, 0));
    ASSERT_GE(Prepare(m), 0);
    EXPECT_EQ(m.VX_INPUT__SET1.fv().Size(), 4u);
    EXPECT_EQ(m.VX_SIG_SET1.fv().Size(), 4u);
    EXPECT_DOUBLE_EQ(m.SELSIG.Upper(), 4.0);
    EXPECT_EQ(m.INPUT_(4).CurrSpec(), VX_SPEC_FIXED);
}

TEST(ControlScripts, AreHandedOverByNameOrIndexAsWritten) {
    const wchar_t* selector = VX_SIGNALSELECTOR::StaticScript("Initialize", 0);
    ASSERT_NE(selector, nullptr);
    EXPECT_EQ(std::wstring(selector).size(), 321u);
    EXPECT_EQ(VX_SIGNALSELECTOR::StaticScript("INITIALIZE", 7), selector);
    EXPECT_EQ(VX_SIGNALSELECTOR::StaticScript(nullptr, 0), selector);
    EXPECT_EQ(VX_SIGNALSELECTOR::StaticScript(nullptr, 1), nullptr);
    EXPECT_EQ(VX_SIGNALSELECTOR::StaticScript("Run", 0), nullptr);
    // The last If of the comparison's script has no closing statement.
    const std::wstring compare = VX_LOGICCOMPARE::StaticScript("initialize", 0);
    EXPECT_EQ(compare.size(), 478u);
    const std::wstring ending = L"is connected\n  Output_.value = 0\n";
    EXPECT_EQ(compare.substr(compare.size() - ending.size()), ending);
    ScopedSession session;
    VX_LOGICCOMPARE m(true);
    EXPECT_EQ(m.Script("Initialize", 0), VX_LOGICCOMPARE::StaticScript("Initialize", 0));
}

TEST(LogicCompare, EqualUnequalAndNaNInputs) {
    struct Case {
        const char* comparison;
        bool equal, less, nan;   // holds for 2 vs 2, for 1 vs 2, with a NaN input
    } cases[] = {{"GT", false, false, false}, {"LT", false, true, false}, {"GE", true, false, false},
                 {"LE", true, true, false},   {"EQ", true, false, false}, {"NEQ", false, true, true},
                 {"ge", true, false, false},  {"nEq", false, true, true}};
    for (const Case& c : cases) {
        ScopedSession session;
        VX_LOGICCOMPARE m(true);
        BlockUnderTest b(m, [&] { SetUser(m.LOGICCOMP, VX_Value(c.comparison, 0)); });
        ASSERT_GE(b.status, 0) << b.Failure();
        m.OUTPUT_.SetSolverValue(0.25);
        // The row is OUTPUT_ - 1 when the comparison holds, OUTPUT_ when not; its entry is 1.
        const auto residual = [&](double in1, double in2) {
            m.INPUT1.SetSolverValue(in1);
            m.INPUT2.SetSolverValue(in2);
            EXPECT_EQ(b.Jacobian(), std::vector<double>{1.0});
            return b.Residuals()[0];
        };
        const auto expect = [](bool holds) { return holds ? -0.75 : 0.25; };
        EXPECT_DOUBLE_EQ(residual(2.0, 2.0), expect(c.equal)) << c.comparison;
        EXPECT_DOUBLE_EQ(residual(1.0, 2.0), expect(c.less)) << c.comparison;
        EXPECT_DOUBLE_EQ(residual(kNaN, 2.0), expect(c.nan)) << c.comparison;
        EXPECT_DOUBLE_EQ(residual(2.0, kNaN), expect(c.nan)) << c.comparison;
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
