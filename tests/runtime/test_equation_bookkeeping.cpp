// Equation groups across a base and a derived class, written the way generated classes are:
// group numbering from m_stLastGroup, skipping of groups, rows and labels from JacPattern.
#include <gtest/gtest.h>

#include "stocklib/generic_bases.hpp"

namespace {
// Base: one group with two equations, x - 1 and y - 2.
class TwoFixed : public VX_GENERICMODEL {
public:
    explicit TwoFixed(bool c = true) : VX_GENERICMODEL(false) { if (c) Construct(); }
    void Construct() {
        VX_GENERICMODEL::Construct();
        AddProperty(&x, this, "X", nullptr, 0, 0);
        AddProperty(&y, this, "Y", nullptr, 0, 0);
    }
    int SetUpEquations() override {
        int n = VX_GENERICMODEL::SetUpEquations();
        if (n < 0) return n;
        first = m_stLastGroup;
        const int start = n;
        SetGroupLimits(first + 1); ++n; AddNonZero(x);
        SetGroupLimits(first + 1); ++n; AddNonZero(y);
        local = n - start;
        return SetLocalEqnCount(n);
    }
    int Residuals(double* r, int group, int start) override {
        int idx = VX_GENERICMODEL::Residuals(r, group, start);
        if (idx < 0) return idx;
        const int end = idx + local;
        if (!ContainsGroup(group)) return end;
        if (group != 0 && group != first + 1) { AddEqnsInGroup(first + 1, idx); return idx; }
        r[idx++] = x.fv() - 1.0;
        r[idx++] = y.fv() - 2.0;
        return group ? end : idx;
    }
    VX_REALVARIABLE x, y;
    int first = 0, local = 0;
};

// Derived: group 1 z - x*y; group 2 over an empty set; group 3 w - z.
class Chain : public TwoFixed {
public:
    Chain() : TwoFixed(false) { Construct(); }
    void Construct() {
        TwoFixed::Construct();
        AddProperty(&z, this, "Z", nullptr, 0, 0);
        AddProperty(&w, this, "W", nullptr, 0, 0);
    }
    int SetUpEquations() override {
        int n = TwoFixed::SetUpEquations();
        if (n < 0) return n;
        myFirst = m_stLastGroup;
        const int start = n;
        SetGroupLimits(myFirst + 1); ++n; AddNonZero(z); AddNonZero(x); AddNonZero(y);
        VX_IntegerSetIter none(VX_IntSetValue(1, 0));
        while (none.Next()) { SetGroupLimits(myFirst + 2); ++n; }
        SetGroupLimits(myFirst + 3); ++n; AddNonZero(w); AddNonZero(z);
        myLocal = n - start;
        return SetLocalEqnCount(n);
    }
    int Residuals(double* r, int group, int start) override {
        int idx = TwoFixed::Residuals(r, group, start);
        if (idx < 0) return idx;
        const int end = idx + myLocal;
        if (!ContainsGroup(group)) return end;
        if (group == 0 || group == myFirst + 1) { r[idx++] = z.fv() - x.fv() * y.fv(); if (group) return end; }
        else AddEqnsInGroup(myFirst + 1, idx);
        if (group != 0 && group != myFirst + 2) AddEqnsInGroup(myFirst + 2, idx);
        else if (group) return end;
        if (group == 0 || group == myFirst + 3) { r[idx++] = w.fv() - z.fv(); if (group) return end; }
        return group ? end : idx;
    }
    int JacPattern(int*& rows, int*& cols, VX_EquationType** types) override {
        const int base = VX_GENERICMODEL::JacPattern(rows, cols, types);
        int* r0 = rows;
        for (VX_Type* v : {&x, &y}) {
            const int e = AddEquation("VX_Eqn1", types);
            AddTerm(*v, rows, cols, e);
        }
        int e = AddEquation("VX_Eqn1", types);
        AddTerm(z, rows, cols, e); AddTerm(x, rows, cols, e); AddTerm(y, rows, cols, e);
        e = AddEquation("VX_Eqn3", types);
        AddTerm(w, rows, cols, e); AddTerm(z, rows, cols, e);
        return base + static_cast<int>(rows - r0);
    }
    VX_REALVARIABLE z, w;
    int myFirst = 0, myLocal = 0;
};
}  // namespace

class EquationBookkeeping : public ::testing::Test {
protected:
    void SetUp() override {
        VX_Session::Current().ResetNumbering();
        VX_ModelType::m_stLastGroup = 40;   // other blocks came first
        n = m.SetUpEquations();
    }
    Chain m;
    int n = 0;
};

TEST_F(EquationBookkeeping, GroupsNumberFromTheLastGroupAndSkipEmptySets) {
    EXPECT_EQ(n, 4);
    EXPECT_EQ(m.first, 40);
    EXPECT_EQ(m.myFirst, 41);
    EXPECT_EQ(VX_ModelType::m_stLastGroup, 44);   // group 43 was never opened
    EXPECT_TRUE(m.ContainsGroup(0));
    EXPECT_TRUE(m.ContainsGroup(44));
    EXPECT_FALSE(m.ContainsGroup(43));
    int eq = 0, nz = 0;
    m.CountEqnsAndNZs(eq, nz);
    EXPECT_EQ(eq, 4);
    EXPECT_EQ(nz, 7);
    int idx = 10;
    m.AddEqnsInGroup(43, idx);
    EXPECT_EQ(idx, 10);
    m.AddNZsandProcsInGroup(42, idx);
    EXPECT_EQ(idx, 13);
}

TEST_F(EquationBookkeeping, ResidualsPerGroupWriteOnlyTheirRows) {
    m.x.SetSolverValue(2); m.y.SetSolverValue(3); m.z.SetSolverValue(5); m.w.SetSolverValue(1);
    double r[4] = {0, 0, 0, 0};
    EXPECT_EQ(m.Residuals(r, 0, 0), 4);
    EXPECT_DOUBLE_EQ(r[2], -1.0);
    EXPECT_DOUBLE_EQ(r[3], -4.0);

    double only[4] = {9, 9, 9, 9};
    EXPECT_EQ(m.Residuals(only, 44, 0), 4);   // w - z only, at its own row
    EXPECT_EQ(only[2], 9);
    EXPECT_DOUBLE_EQ(only[3], -4.0);

    double base[4] = {9, 9, 9, 9};
    EXPECT_EQ(m.Residuals(base, 41, 0), 4);   // the base class's group
    EXPECT_DOUBLE_EQ(base[0], 1.0);
    EXPECT_DOUBLE_EQ(base[1], 1.0);
    EXPECT_EQ(base[2], 9);

    double none[4] = {9, 9, 9, 9};
    EXPECT_EQ(m.Residuals(none, 99, 0), 4);   // not a group of this model: nothing written
    EXPECT_EQ(none[0], 9);
}

TEST_F(EquationBookkeeping, PatternRowsColumnsAndLabels) {
    int rows[7], cols[7];
    int* rp = rows;
    int* cp = cols;
    EXPECT_EQ(m.JacPattern(rp, cp, nullptr), 7);
    EXPECT_EQ(rp - rows, 7);
    EXPECT_EQ(rows[6], 3);
    EXPECT_EQ(cols[0], 0);               // x numbered first
    EXPECT_EQ(cols[2], cols[6]);         // z in rows 2 and 3 is one column
    EXPECT_EQ(cols[3], cols[0]);         // so is x in rows 0 and 2
    EXPECT_EQ(VX_Session::Current().Columns().size(), 4u);
    EXPECT_STREQ(m.RowLabel(2), "VX_Eqn1");
    EXPECT_STREQ(m.RowLabel(3), "VX_Eqn3");
    EXPECT_EQ(m.RowLabel(4), nullptr);
    EXPECT_EQ(m.z.Path(), "Z");
}

TEST_F(EquationBookkeeping, ExpressionsAreRecordedOnlyWhenAsked) {
    VX_Session& s = VX_Session::Current();
    int rows[7], cols[7];
    for (bool on : {false, true}) {
        s.ResetNumbering();
        s.SetRecordExpressions(on);
        int* rp = rows;
        int* cp = cols;
        m.JacPattern(rp, cp, nullptr);
        if (!on) {
            EXPECT_TRUE(s.Tape().empty());
            continue;
        }
        ASSERT_EQ(s.Tape().size(), 7u);   // one term per variable occurrence
        for (const auto& item : s.Tape()) EXPECT_LT(item.eqn, s.RowCount());
    }
    s.SetRecordExpressions(false);
    s.ResetNumbering();
}

TEST(DependencyRecording, SetUpReadsCountAndFastReadsDoNot) {
    VX_Session& s = VX_Session::Current();
    VX_REALVARIABLE x;
    s.BeginRecording();
    (void)x.fv();
    (void)x.v();
    (void)x.v();
    EXPECT_EQ(s.EndRecording(), 2);
    (void)x.v();                       // not recording any more
    s.BeginRecording();
    EXPECT_EQ(s.EndRecording(), 0);
}
