// Stored-set grammar and set membership: the forms option tables and integer types use.
#include <gtest/gtest.h>

#include <stdexcept>

#include "zorexp/sets.hpp"

TEST(IntegerSetGrammar, RangesAndContinuations) {
    const auto s = VX_ParseIntSet("1\":3\"");  // 1 continued to 3
    EXPECT_EQ(s.Size(), 3u);
    EXPECT_TRUE(s.Contains(2));
    EXPECT_FALSE(s.Contains(4));

    const auto mixed = VX_ParseIntSet("7\"1:2\"5\":5\"");
    EXPECT_EQ(mixed.Size(), 4u);      // 1, 2, 5, 7 in ascending order
    EXPECT_EQ(mixed.At(0), 1);
    EXPECT_EQ(mixed.At(3), 7);
    EXPECT_EQ(mixed.PositionOf(5).value(), 2u);
    EXPECT_EQ(VX_ParseIntSet(mixed.Text()), mixed);   // stored form reads back the same
    EXPECT_TRUE(VX_ParseIntSet("").Empty());
}

TEST(IntegerSetGrammar, MalformedMembersNameThemselves) {
    for (const char* bad : {":3\"", "x\"", "4:2\"", "1\"\"", "2\":1\""}) {
        try {
            VX_ParseIntSet(bad);
            ADD_FAILURE() << "accepted " << bad;
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find("integer set"), std::string::npos) << e.what();
        }
    }
}

TEST(IntegerSetData, AdjacentRangesMergeAndPositionsFollowOrder) {
    VX_IntSetData s(10, 12);
    s.AddRange(13, 15);
    s.Add(0);
    EXPECT_EQ(s.Ranges().size(), 2u);
    EXPECT_EQ(s.Size(), 7u);
    for (std::size_t p = 0; p < s.Size(); ++p) EXPECT_EQ(s.PositionOf(s.At(p)).value(), p);
    EXPECT_TRUE(VX_IntSetData(3, 2).Empty());
}

TEST(StringSetGrammar, EmptyFirstMemberAndCaseInsensitiveLookup) {
    const auto s = VX_ParseStrSet("\"Free-Radical\"Zeigler Natta\"");
    ASSERT_EQ(s.Size(), 3u);
    EXPECT_EQ(s.At(0), "");
    EXPECT_EQ(s.PositionOf("free-radical").value(), 1u);
    EXPECT_FALSE(s.Contains("Ziegler Natta"));
    EXPECT_EQ(VX_ParseStrSet(s.Text()), s);
}

TEST(SetIterators, WalkInSetOrderAcrossRanges) {
    VX_IntSetData data(0, 2);
    data.AddRange(5, 6);
    VX_IntegerSetIter it(std::make_shared<const VX_IntSetData>(data));
    std::vector<int> seen;
    while (it.Next()) seen.push_back(it.fv());
    EXPECT_EQ(seen, (std::vector<int>{0, 1, 2, 5, 6}));
    EXPECT_FALSE(it.Next());
    it.Reset();
    ASSERT_TRUE(it.Next());
    EXPECT_EQ(it.Integer(), 0);

    VX_StringSetIter none(VX_StrSetValue(""));
    EXPECT_FALSE(none.Next());
    EXPECT_EQ(none.Elements(), 0);
}

TEST(SetProduct, KeepsTheCommonMembersInTheLeftOperandsOrder) {
    const VX_StrSetValue option(std::vector<std::string>{"COAL", "water", "ASH"});
    const VX_StrSetValue components(std::vector<std::string>{"WATER", "N2", "COAL"});
    EXPECT_EQ((option * components).Data().Members(), (std::vector<std::string>{"COAL", "water"}));
    EXPECT_EQ((components * option).Data().Members(), (std::vector<std::string>{"WATER", "COAL"}));
    EXPECT_TRUE((option * VX_StrSetValue()).Data().Empty());
    EXPECT_TRUE((VX_StrSetValue() * option).Data().Empty());

    // Integer sets overlap range by range: {1..4, 8..9} * {3..8} = {3, 4, 8}.
    const VX_IntSetValue a("1:4\"8:9\""), b(3, 8);
    EXPECT_EQ((a * b).Data(), VX_ParseIntSet("3:4\"8\""));
    EXPECT_TRUE((a * VX_IntSetValue(5, 7)).Data().Empty());
    EXPECT_EQ((a * a).Data(), a.Data());
}
