#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "frame/arrays.hpp"
#include "types/variable_types.hpp"

namespace {

VX_StrSetValue Names(std::vector<std::string> names) { return VX_StrSetValue(std::move(names)); }

TEST(Arrays, NewElementIsAFullyInitialisedVariable) {
    VX_ARRAY_I<VX_TEMPERATURE, VX_TEMPERATURE> a(true);
    VX_Type* made = a.NewElement();
    auto* t = dynamic_cast<VX_TEMPERATURE*>(made);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->fv(), 25.0);
    EXPECT_EQ(t->Lower(), -246.0);
    EXPECT_EQ(t->Upper(), 5000.0);
    delete made;
}

TEST(Arrays, IntegerArrayOverRangesFollowsSetOrder) {
    VX_GENERICMODEL owner(true);
    VX_ARRAY_I<VX_TEMPERATURE, VX_TEMPERATURE> t(true);
    VX_Type::AddProperty(&t, &owner, "T", nullptr, 0, 0);
    const VX_IntSetValue set("5\"1\":3\"");             // {1, 2, 3, 5}
    t.SetDim(set.Shared());
    ASSERT_EQ(t.Size(), 4);
    EXPECT_EQ(t(5).Path(), "T(5)");                    // not one range: looked up
    EXPECT_EQ(t.Find(4), nullptr);
    EXPECT_THROW(t(4), std::out_of_range);
    std::vector<std::string> paths;
    VX_IntegerSetIter i(set);
    while (i.Next()) paths.push_back(t(i).Path());
    EXPECT_EQ(paths, (std::vector<std::string>{"T(1)", "T(2)", "T(3)", "T(5)"}));
}

TEST(Arrays, StringArrayFindsByIteratorPositionAndByText) {
    VX_GENERICMODEL owner(true);
    VX_ARRAY_S<VX_TEMPERATURE, VX_TEMPERATURE> x(true);
    VX_Type::AddProperty(&x, &owner, "X", nullptr, 0, 0);
    const VX_StrSetValue comps = Names({"Water", "Ethanol"});
    x.SetDim(comps);
    x("ETHANOL").SetSolverValue(7.0);
    VX_StringSetIter own(comps);
    VX_StringSetIter other(Names({"Ethanol", "Water"}));   // another set: found by text
    own.Next();
    other.Next();
    EXPECT_EQ(&x(own), &x("water"));
    EXPECT_EQ(x(other).fv(), 7.0);
    EXPECT_EQ(x("Ethanol").Path(), "X(Ethanol)");
}

TEST(Arrays, CopyHasItsOwnElementsWithTheSameValues) {
    VX_ARRAY_I<VX_TEMPERATURE, VX_TEMPERATURE> a(true);
    a.SetDim(VX_IntSetValue(0, 2).Shared());
    a(1).SetSolverValue(99.0);
    VX_ARRAY_I<VX_TEMPERATURE, VX_TEMPERATURE> b(a);
    ASSERT_EQ(b.Size(), 3);
    EXPECT_EQ(b(1).fv(), 99.0);
    EXPECT_NE(&b(1), &a(1));
    EXPECT_EQ(b(1).Owner(), &b);
}

class MultiIndex : public ::testing::Test {
protected:
    void SetUp() override {
        VX_Type::AddProperty(&coef, &owner, "COEF", nullptr, 0, 0);
        coef.SetDim(comps, VX_IntSetValue(1, 2));
    }
    VX_GENERICMODEL owner{true};
    VX_ARRAY_SI<VX_TEMPERATURE, VX_TEMPERATURE> coef{true};
    VX_StrSetValue comps = Names({"A", "B"});
};

TEST_F(MultiIndex, ElementsInRowMajorOrderWithCommaPaths) {
    ASSERT_EQ(coef.Size(), 4);
    EXPECT_EQ(coef.Dimensions(), 2);
    std::vector<std::string> paths;
    for (int k = 0; k < coef.Size(); ++k) paths.push_back(coef.At(k)->Path());
    EXPECT_EQ(paths, (std::vector<std::string>{"COEF(A,1)", "COEF(A,2)", "COEF(B,1)", "COEF(B,2)"}));
    EXPECT_EQ(coef.Find("b", 2), coef.At(3));
    EXPECT_EQ(coef.Find("C", 1), nullptr);
    EXPECT_EQ(coef.Find("A", 3), nullptr);
    VX_StringSetIter s(comps);   // walks the array's own set: found by position
    while (s.Next()) {
        VX_IntegerSetIter i(VX_IntSetValue(1, 2));
        while (i.Next()) EXPECT_EQ(&coef(s, i), coef.Find(s.String(), i.Integer()));
    }
}

TEST_F(MultiIndex, IndexTextsAndMissingElements) {
    try {
        coef("C", 1);
        ADD_FAILURE() << "expected std::out_of_range";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "array COEF has no element (C,1)");
    }
    EXPECT_EQ(coef.CreateMissingArrayElement("B, 2"), coef.Find("B", 2));
    EXPECT_EQ(coef.CreateMissingArrayElement("B,3"), nullptr);
    EXPECT_EQ(coef.CreateMissingArrayElement("B"), nullptr);
    EXPECT_EQ(coef.CreateMissingArrayElement("B,x"), nullptr);
    EXPECT_EQ(coef.CreateMissingArrayElement("1,B"), nullptr);
}

TEST_F(MultiIndex, RedimensionKeepsSurvivingElements) {
    coef("B", 2).SetSolverValue(42.0);
    VX_TEMPERATURE* kept = &coef("B", 2);
    coef.SetDim(Names({"C", "B"}), VX_IntSetValue(1, 3));
    ASSERT_EQ(coef.Size(), 6);
    EXPECT_EQ(&coef("B", 2), kept);
    EXPECT_EQ(coef("B", 2).fv(), 42.0);
    EXPECT_EQ(coef("B", 2).Path(), "COEF(B,2)");
    EXPECT_EQ(coef("C", 3).fv(), 25.0);
    EXPECT_EQ(coef.Find("A", 1), nullptr);
    coef.SetDim(Names({}), VX_IntSetValue(1, 3));
    EXPECT_EQ(coef.Size(), 0);
    EXPECT_EQ(coef.Find("B", 2), nullptr);
}

TEST(Arrays, MultiIndexArrayFollowsItsSetProperties) {
    VX_ARRAY_SI<VX_TEMPERATURE, VX_TEMPERATURE> x(true);
    VX_STRINGSET comps(true);    // declared after the array: destroyed first
    VX_INTEGERSET points(true);
    x.SetDim(comps, points);
    EXPECT_EQ(x.Size(), 0);
    const VX_Value range(VX_IntSetValue(1, 3), VX_CTX_MODEL, 1, 1);
    points.Assign(&range);
    EXPECT_EQ(x.Size(), 0);
    comps.SetMembers(Names({"A", "B"}).Shared());
    ASSERT_EQ(x.Size(), 6);
    x("B", 3).SetSolverValue(8.0);
    comps.SetMembers(Names({"B"}).Shared());
    ASSERT_EQ(x.Size(), 3);
    EXPECT_EQ(x("B", 3).fv(), 8.0);
}

TEST(Arrays, FourIndexArray) {
    VX_GENERICMODEL owner(true);
    VX_ARRAY_SISS<VX_TEMPERATURE, VX_TEMPERATURE> k(true);
    VX_Type::AddProperty(&k, &owner, "K", nullptr, 0, 0);
    k.SetDim(Names({"A", "B"}), VX_IntSetValue(0, 1), Names({"L"}), Names({"X", "Y", "Z"}));
    EXPECT_EQ(k.Size(), 12);
    EXPECT_EQ(k("B", 0, "l", "Y").Path(), "K(B,0,L,Y)");
    EXPECT_EQ(k.At(11)->Path(), "K(B,1,L,Z)");
}

}  // namespace
