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
