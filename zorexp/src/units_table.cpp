#include "zorexp/units_table.hpp"

#include <algorithm>
#include <iterator>

namespace {
constexpr VX_UnitEntry kUnits[] = {
#define VX_UNIT(row, col, unit, quantity) {row, col, unit, quantity},
#include "zorexp/units_table.def"
#undef VX_UNIT
};

constexpr bool Before(const VX_UnitEntry& a, const VX_UnitEntry& b) {
    return a.row < b.row || (a.row == b.row && a.col < b.col);
}

constexpr bool StrictlyAscending() {
    for (std::size_t k = 1; k < std::size(kUnits); ++k)
        if (!Before(kUnits[k - 1], kUnits[k])) return false;
    return true;
}
static_assert(StrictlyAscending(), "units_table.def: entries must ascend by row, then column, without repeats");
}  // namespace

const VX_UnitEntry* VX_FindUnit(int row, int col) {
    const VX_UnitEntry key{row, col, nullptr, nullptr};
    const auto* it = std::lower_bound(std::begin(kUnits), std::end(kUnits), key, Before);
    if (it == std::end(kUnits) || it->row != row || it->col != col) return nullptr;
    return it;
}
