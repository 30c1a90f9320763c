#include <gtest/gtest.h>

#include <cfloat>
#include <string>
#include <vector>

#include "frame/arrays.hpp"
#include "frame/reductions.hpp"
#include "types/variable_types.hpp"

namespace {

using namespace vx_reduce;

const VX_IntSetValue kEmpty;
double Zero(const VX_IntegerSetIter&) { return 0.0; }

TEST(Reductions, EmptySetsGiveTheStartValues) {
    EXPECT_EQ(Sigma(kEmpty, Zero), 0.0);
    EXPECT_EQ(Prod(kEmpty, Zero), 1.0);
    EXPECT_EQ(Max(-1, kEmpty, Zero), -1.7976931348623157e308);
    EXPECT_EQ(Max(-1, kEmpty, Zero), -DBL_MAX);
    EXPECT_EQ(Min(-1, kEmpty, Zero), DBL_MAX);
    EXPECT_EQ(Max(0, kEmpty, Zero), 0.0);
    EXPECT_TRUE(UnionFn(kEmpty, [](const VX_IntegerSetIter&) { return VX_StrSetValue("A\""); }).Data().Empty());
}

TEST(Reductions, TermsReadArraysInSetOrder) {
    const VX_StrSetValue comps(std::vector<std::string>{"C", "A", "B"});
    VX_ARRAY_S<VX_TEMPERATURE, VX_TEMPERATURE> x(true);
    x.SetDim(comps);
    x("C").SetSolverValue(2.0);
    x("A").SetSolverValue(-3.0);
    x("B").SetSolverValue(5.0);
    std::vector<std::string> seen;
    const double sum = Sigma(comps, [&](const VX_StringSetIter& i) {
        seen.emplace_back(i.String());
        return x(i).v();
    });
    EXPECT_EQ(sum, 4.0);
    EXPECT_EQ(seen, (std::vector<std::string>{"C", "A", "B"}));
    EXPECT_EQ(Prod(comps, [&](const VX_StringSetIter& i) { return x(i).fv(); }), -30.0);
    EXPECT_EQ(Max(-1, comps, [&](const VX_StringSetIter& i) { return x(i).fv(); }), 5.0);
    EXPECT_EQ(Min(-1, comps, [&](const VX_StringSetIter& i) { return x(i).fv(); }), -3.0);
}

TEST(Reductions, MaxAndMinWithAPositionSelectTheFirstExtremum) {
    const VX_IntSetValue set(1, 4);
    const double terms[] = {1.0, 7.0, 7.0, -2.0};   // by position
    auto term = [&](const VX_IntegerSetIter& i) { return terms[i.Position()]; };
    std::vector<double> maxSel, minSel;
    for (int k = 0; k < 5; ++k) {
        maxSel.push_back(Max(k, set, term));
        minSel.push_back(Min(k, set, term));
    }
    EXPECT_EQ(maxSel, (std::vector<double>{0, 1, 0, 0, 0}));
    EXPECT_EQ(minSel, (std::vector<double>{0, 0, 0, 1, 0}));
    EXPECT_EQ(Max(-2, set, term), 0.0);
}

TEST(Reductions, UnionFnComposesSetsInOrder) {
    const VX_IntSetValue set(1, 3);
    const auto names = UnionFn(set, [](const VX_IntegerSetIter& i) {
        return i.v() == 2 ? VX_StrSetValue("b\"C\"") : VX_StrSetValue("B\"A\"");
    });
    EXPECT_EQ(names.Data().Members(), (std::vector<std::string>{"B", "A", "C"}));
    const auto ints = UnionFn(set, [](const VX_IntegerSetIter& i) { return VX_IntSetValue(3 * i.v(), 3 * i.v() + 1); });
    EXPECT_EQ(ints.Data().Text(), "3\":4\"6\":7\"9\":10\"");
    EXPECT_EQ(Union(VX_IntSetValue(1, 2), VX_IntSetValue(3, 5)).Data().Text(), "1\":5\"");
}

}  // namespace
