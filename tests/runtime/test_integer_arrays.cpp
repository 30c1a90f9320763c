// Integer-indexed arrays: sizing over sets, lookups, and re-sizing that keeps surviving elements.
#include <gtest/gtest.h>

#include "zorexp/zorexp.hpp"

namespace {
class Temps : public VX_BASE_I {
public:
    VX_Type* NewElement() override { ++made; return new VX_REALVARIABLE(true); }
    VX_REALVARIABLE& operator()(int i) { return static_cast<VX_REALVARIABLE&>(Get(i)); }
    int made = 0;
};
}  // namespace

TEST(IntegerArrays, ResizingKeepsSurvivorsAndTheirValues) {
    Temps a;
    a.SetDim(std::make_shared<const VX_IntSetData>(0, 3));
    EXPECT_EQ(a.Size(), 4);
    a(2).SetSolverValue(42.0);
    a.SetDim(std::make_shared<const VX_IntSetData>(2, 5));
    EXPECT_EQ(a.made, 6);                   // 4, then 4 and 5
    EXPECT_EQ(a(2).fv(), 42.0);
    EXPECT_EQ(a.Find(0), nullptr);
    EXPECT_THROW(a(1), std::out_of_range);

    VX_IntSetData gaps(1, 2);
    gaps.Add(9);
    a.SetDim(std::make_shared<const VX_IntSetData>(gaps));
    EXPECT_NE(a.Find(9), nullptr);
    EXPECT_EQ(a.Find(5), nullptr);
    EXPECT_EQ(a(2).fv(), 42.0);
    EXPECT_EQ(a.IndexText(2), "9");
    EXPECT_EQ(a.CreateMissingArrayElement("nine"), nullptr);
    EXPECT_EQ(a.CreateMissingArrayElement("9"), a.Find(9));
}

TEST(IntegerArrays, FollowTheirSetWhenItIsAssignedLater) {
    VX_INTEGERSET range;
    Temps a;
    a.SetDim(range);                 // sized before the set has its value, as SetDims runs first
    EXPECT_EQ(a.Size(), 0);
    VX_Value v(VX_IntSetValue(0, 4), VX_CTX_MODEL, 1, 1);
    range.Assign(&v);
    EXPECT_EQ(a.Size(), 5);
    a(4).SetSolverValue(7.0);
    VX_Value shorter(VX_IntSetValue(3, 4), VX_CTX_MODEL, 1, 1);
    range.Assign(&shorter);
    EXPECT_EQ(a.Size(), 2);
    EXPECT_EQ(a(4).fv(), 7.0);
    {
        Temps b;
        b.SetDim(range);             // b leaves the set's followers when destroyed
    }
    range.Assign(&v);
    EXPECT_EQ(a.Size(), 5);
}

TEST(IntegerArrays, ValueVectorsOnlyOverTheirOwnSet) {
    VX_INTEGERSET range, other;
    Temps a;
    a.SetDim(range);
    EXPECT_EQ(a.ValuesOver(range), nullptr);   // empty: nothing to read, nothing wrong
    VX_Value v(VX_IntSetValue(3, 5), VX_CTX_MODEL, 1, 1);
    VX_Value w(VX_IntSetValue(3, 5), VX_CTX_MODEL, 1, 1);
    range.Assign(&v);
    other.Assign(&w);                          // same members, another set
    const double* values = a.ValuesOver(range);
    ASSERT_NE(values, nullptr);
    a(4).SetSolverValue(2.5);
    EXPECT_EQ(values[1], 2.5);                 // position 1 of {3, 4, 5}
    EXPECT_THROW(a.ValuesOver(other), std::logic_error);
}

TEST(IntegerArrays, GrowthBeyondTheSessionsElementLimitIsRefusedBeforeAnythingChanges) {
    VX_Session session;
    VX_Session* previous = VX_Session::MakeCurrent(&session);
    session.SetElementLimit(10);
    {
        Temps a, b;
        a.SetDim(std::make_shared<const VX_IntSetData>(0, 5));
        EXPECT_EQ(session.Elements(), 6u);
        try {
            b.SetDim(std::make_shared<const VX_IntSetData>(1, 5));   // 6 + 5 > 10
            ADD_FAILURE();
        } catch (const VX_SizeLimitError& e) {
            EXPECT_EQ(e.Requested(), 5u);
            EXPECT_STREQ(e.what(), "an array would have 5 elements, bringing the array elements in use to 11, more than "
                                   "the limit of 10 array elements");
        }
        EXPECT_EQ(b.Size(), 0);
        EXPECT_EQ(b.made, 0);
        // Shrinking one array makes room for the other; a set far beyond the limit costs nothing.
        a.SetDim(std::make_shared<const VX_IntSetData>(0, 1));
        b.SetDim(std::make_shared<const VX_IntSetData>(1, 5));
        EXPECT_EQ(session.Elements(), 7u);
        EXPECT_THROW(a.SetDim(std::make_shared<const VX_IntSetData>(0, 2147483646)), VX_SizeLimitError);
        EXPECT_EQ(a.Size(), 2);

        // A set that users give is refused when it alone is beyond the limit; a model's
        // assignment reaches the arrays that follow it, which refuse to grow.
        VX_INTEGERSET range;
        Temps c;
        c.SetDim(range);
        std::string why;
        EXPECT_EQ(range.AssignUser(VX_ATTR_VALUE, VX_Value(VX_IntSetValue(0, 100), 0), &why), VX_AS_REFUSED);
        EXPECT_EQ(why, "has 101 members, more than the limit of 10 array elements");
        VX_Value model(VX_IntSetValue(0, 5), VX_CTX_MODEL, 1, 1);
        EXPECT_THROW(range.Assign(&model), VX_SizeLimitError);
        EXPECT_EQ(c.Size(), 0);
    }
    EXPECT_EQ(session.Elements(), 0u);   // arrays give their elements back when destroyed
    VX_Session::MakeCurrent(previous);
}
