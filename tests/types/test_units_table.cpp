// The units table against the types that index it: every position a type uses is in the
// table with the type's unit text, and the table holds nothing that no type uses.
#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "type_rows.hpp"
#include "zorexp/units_table.hpp"

namespace {
// Row 85 column 1 is a plain fraction: the table gives it no unit text, and types write it as
// a ratio of like units ("kmol/kmol", "kg/kg").
bool IsLikeUnitRatio(const std::string& unit) {
    const auto slash = unit.find('/');
    return slash != std::string::npos && slash > 0 && unit.substr(0, slash) == unit.substr(slash + 1);
}

TEST(UnitsTable, EveryPositionATypeUsesIsListedWithItsUnit) {
    for (const auto& t : TypeUnits()) {
        SCOPED_TRACE(t.name);
        if (t.row == 0 && t.col == 0) continue;   // no entry
        // A position belongs to a quantity.
        EXPECT_NE(t.quantity, vx_defaults::kQuantity);
        const VX_UnitEntry* e = VX_FindUnit(t.row, t.col);
        ASSERT_NE(e, nullptr) << "row " << t.row << " col " << t.col;
        EXPECT_EQ(e->row, t.row);
        EXPECT_EQ(e->col, t.col);
        if (*e->unit == '\0') {
            EXPECT_TRUE(IsLikeUnitRatio(t.unit)) << t.unit;
        } else {
            EXPECT_EQ(t.unit, e->unit);
        }
    }
}

TEST(UnitsTable, HoldsOnlyPositionsInUse) {
    std::set<std::pair<int, int>> used;
    for (const auto& t : TypeUnits()) used.insert({t.row, t.col});
    int entries = 0;
#define VX_UNIT(ROW, COL, UNIT, QUANTITY)                                                  \
    {                                                                                      \
        ++entries;                                                                         \
        EXPECT_TRUE(used.count({ROW, COL})) << "entry " << ROW << "/" << COL << " unused"; \
        const VX_UnitEntry* e = VX_FindUnit(ROW, COL);                                     \
        EXPECT_TRUE(e && e->unit == std::string(UNIT)) << ROW << "/" << COL;               \
    }
#include "zorexp/units_table.def"
#undef VX_UNIT
    used.erase({0, 0});
    EXPECT_EQ(static_cast<std::size_t>(entries), used.size());
}

TEST(UnitsTable, AbsentPositions) {
    EXPECT_EQ(VX_FindUnit(0, 0), nullptr);
    EXPECT_EQ(VX_FindUnit(22, 2), nullptr);    // a row in use, a column not
    EXPECT_EQ(VX_FindUnit(1, 0), nullptr);     // before the first entry
    EXPECT_EQ(VX_FindUnit(124, 1), nullptr);   // after the last
    EXPECT_EQ(VX_FindUnit(-1, -1), nullptr);
    ASSERT_NE(VX_FindUnit(22, 1), nullptr);
    EXPECT_STREQ(VX_FindUnit(22, 1)->unit, "K");
    EXPECT_STREQ(VX_FindUnit(22, 4)->unit, "C");
}
}  // namespace
