// Assignment precedence and refusal: user values win, higher levels win, refusals change nothing.
#include <gtest/gtest.h>

#include "zorexp/zorexp.hpp"

namespace {
class YesNo : public VX_STRINGPARAMETER {
public:
    YesNo() : VX_STRINGPARAMETER(false) { InitializeSystemAttributes(); }
    const VX_Value* VX_DefaultVALUE() const override { static const VX_Value v("Yes", 0); return &v; }
    const VX_Value* VX_DefaultVALID() const override { static const VX_Value v(VX_StrSetValue("No\"Yes\""), 0); return &v; }
};
class Count : public VX_INTEGERPARAMETER {
public:
    Count() : VX_INTEGERPARAMETER(false) { InitializeSystemAttributes(); }
    const VX_Value* VX_DefaultLOWER() const override { static const VX_Value v(1, 0); return &v; }
    const VX_Value* VX_DefaultVALUE() const override { static const VX_Value v(1, 0); return &v; }
};
}  // namespace

TEST(AssignmentPrecedence, UserValueSurvivesModelAssignments) {
    VX_REALVARIABLE x;
    std::string why;
    ASSERT_EQ(x.AssignUser(VX_ATTR_VALUE, VX_Value(5.0, 0), &why), VX_AS_ASSIGNED) << why;
    VX_Value model(7.0, VX_CTX_MODEL, 100, 1);
    EXPECT_EQ(x.VALUE().Assign(&model), VX_AS_KEPT_USER_VALUE);
    EXPECT_EQ(x.fv(), 5.0);
    x.RetractNonModelAssignment();
    EXPECT_EQ(x.VALUE().Assign(&model), VX_AS_ASSIGNED);
    EXPECT_EQ(x.fv(), 7.0);
}

TEST(AssignmentPrecedence, HigherLevelWinsAndRerunIsStable) {
    VX_REALVARIABLE x;
    // A base class assigns at level 9 after its derived class ran at level 10 (second pass).
    VX_Value derived(VX_SPEC_FIXED, VX_CTX_MODEL, 10, 2), base(VX_SPEC_FREE, VX_CTX_MODEL, 9, 1);
    for (int pass = 0; pass < 2; ++pass) {
        const auto b = x.SPEC().Assign(&base);
        EXPECT_EQ(b, pass == 0 ? VX_AS_ASSIGNED : VX_AS_KEPT_HIGHER);
        EXPECT_EQ(x.SPEC().Assign(&derived), VX_AS_ASSIGNED);
        EXPECT_EQ(x.CurrSpec(), VX_SPEC_FIXED);
    }
    EXPECT_FALSE(x.SPEC().IsDefaultAssignment());
}

TEST(AssignmentRefusal, NamesTheProblemAndKeepsTheValue) {
    YesNo opt;
    std::string why;
    EXPECT_EQ(opt.AssignUser(VX_ATTR_VALUE, VX_Value("Maybe", 0), &why), VX_AS_REFUSED);
    EXPECT_NE(why.find("\"Maybe\""), std::string::npos) << why;
    EXPECT_NE(why.find("\"No\", \"Yes\""), std::string::npos) << why;
    EXPECT_STREQ(opt.fv(), "Yes");
    EXPECT_EQ(opt.AssignUser(VX_ATTR_VALUE, VX_Value("no", 0), &why), VX_AS_ASSIGNED);  // any case
    EXPECT_EQ(opt.AssignUser(VX_ATTR_VALUE, VX_Value(1.0, 0), &why), VX_AS_REFUSED);
    EXPECT_NE(why.find("expects a text"), std::string::npos) << why;

    Count n;
    EXPECT_EQ(n.AssignUser(VX_ATTR_VALUE, VX_Value(0, 0), &why), VX_AS_REFUSED);
    EXPECT_NE(why.find("below the lower bound 1"), std::string::npos) << why;
    EXPECT_EQ(n.AssignUser(VX_ATTR_VALUE, VX_Value(2.5, 0), &why), VX_AS_REFUSED);
    EXPECT_EQ(n.fv(), 1);
    VX_Value model(0, VX_CTX_MODEL, 1, 1);
    EXPECT_EQ(n.Assign(&model), VX_AS_REFUSED);   // model assignments are checked too

    VX_REALVARIABLE x;
    EXPECT_EQ(x.AssignUser(VX_ATTR_LOWER, VX_Value(2e35, 0), &why), VX_AS_REFUSED);  // above upper
    EXPECT_EQ(x.AssignUser(VX_ATTR_SPEC, VX_Value(7, 0), &why), VX_AS_REFUSED);
}
