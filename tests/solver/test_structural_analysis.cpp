#include <gtest/gtest.h>

#include <random>

#include "solver/structural_analysis.hpp"

using namespace zx::solve;

namespace {

// Plain augmenting-path matching, as an independent reference.
bool augment(int row, const std::vector<std::vector<int>>& cols_of_row, std::vector<int>& row_of_col,
             std::vector<char>& visited) {
    for (int c : cols_of_row[row]) {
        if (visited[c]) continue;
        visited[c] = 1;
        if (row_of_col[c] < 0 || augment(row_of_col[c], cols_of_row, row_of_col, visited)) {
            row_of_col[c] = row;
            return true;
        }
    }
    return false;
}

int reference_rank(const TripletPattern& t) {
    std::vector<std::vector<int>> cols_of_row(t.n_rows);
    for (int k = 0; k < t.size(); ++k) cols_of_row[t.rows[k]].push_back(t.cols[k]);
    std::vector<int> row_of_col(t.n_cols, -1);
    int rank = 0;
    for (int i = 0; i < t.n_rows; ++i) {
        std::vector<char> visited(t.n_cols, 0);
        rank += augment(i, cols_of_row, row_of_col, visited);
    }
    return rank;
}

}  // namespace

TEST(StructuralAnalysis, MatchingIsMaximumAndConsistentOnRandomRectangularPatterns) {
    std::mt19937 rng(12345);
    for (int trial = 0; trial < 300; ++trial) {
        const int m = 1 + static_cast<int>(rng() % 12), n = 1 + static_cast<int>(rng() % 12);
        TripletPattern t{m, n, {}, {}};
        const int nnz = static_cast<int>(rng() % (2 * (m + n)));
        for (int k = 0; k < nnz; ++k) t.add(static_cast<int>(rng() % m), static_cast<int>(rng() % n));

        const StructuralReport r = analyse_structure(t);
        ASSERT_EQ(r.structural_rank, reference_rank(t)) << m << " x " << n << " trial " << trial;
        EXPECT_EQ(static_cast<int>(r.unmatched_rows.size()), m - r.structural_rank);
        EXPECT_EQ(static_cast<int>(r.unmatched_cols.size()), n - r.structural_rank);
        const CscPattern p = CscPattern::from_triplets(t);
        for (int i = 0; i < m; ++i) {
            const int j = r.column_of_row[i];
            if (j < 0) continue;
            ASSERT_EQ(r.row_of_column[j], i);
            bool present = false;
            for (int k = p.col_start[j]; k < p.col_start[j + 1]; ++k) present |= p.row_index[k] == i;
            ASSERT_TRUE(present) << "row " << i << " matched to absent entry in column " << j;
        }
        // The over- and under-determined parts never share an equation or unknown.
        for (int i : r.overdetermined_rows) {
            EXPECT_FALSE(std::binary_search(r.underdetermined_rows.begin(), r.underdetermined_rows.end(), i));
        }
        for (int j : r.overdetermined_cols) {
            EXPECT_FALSE(std::binary_search(r.underdetermined_cols.begin(), r.underdetermined_cols.end(), j));
        }
    }
}

TEST(StructuralAnalysis, SquareSingularSystemSplitsIntoOverAndUnderDeterminedParts) {
    // e0: f(x0)  e1: g(x0)  e2: h(x1, x2)  e3: k(x2, x3)  e4: m(x3)
    // e0/e1 compete for x0; x1, x2, x3 are left with e2, e3, e4 (fine);
    // nothing at all for x4.
    TripletPattern t{5, 5, {0, 1, 2, 2, 3, 3, 4}, {0, 0, 1, 2, 2, 3, 3}};
    const StructuralReport r = analyse_structure(t);
    EXPECT_EQ(r.structural_rank, 4);
    EXPECT_FALSE(r.nonsingular());
    EXPECT_EQ(r.overdetermined_rows, (std::vector<int>{0, 1}));
    EXPECT_EQ(r.overdetermined_cols, (std::vector<int>{0}));
    EXPECT_EQ(r.underdetermined_cols, (std::vector<int>{4}));
    EXPECT_TRUE(r.underdetermined_rows.empty());

    // (Appending rather than "E" + to_string(i) sidesteps a false GCC 12 -Wrestrict at -O3.)
    const auto namer = [](char prefix) {
        return [prefix](int i) { return std::string(1, prefix).append(std::to_string(i)); };
    };
    const std::string text = explain_structure(r, namer('E'), namer('X'));
    EXPECT_EQ(text,
              "5 equations in 5 unknowns, structural rank 4. Over-determined: 1 equation too many "
              "among equations E0, E1, which contain only unknowns X0. Under-determined: 1 unknown "
              "too many among unknowns X4, which appear in no equation.");
}

TEST(StructuralAnalysis, NonSquareSystemsReportTheSurplusSide) {
    // Two equations in three unknowns: x2 competes with x1 in e1.
    const StructuralReport wide = analyse_structure(TripletPattern{2, 3, {0, 1, 1}, {0, 1, 2}});
    EXPECT_EQ(wide.structural_rank, 2);
    EXPECT_TRUE(wide.overdetermined_rows.empty());
    EXPECT_EQ(wide.underdetermined_cols, (std::vector<int>{1, 2}));
    EXPECT_EQ(wide.underdetermined_rows, (std::vector<int>{1}));

    // Three equations in one unknown; the list is cut at max_listed.
    const StructuralReport tall = analyse_structure(TripletPattern{3, 1, {0, 1, 2}, {0, 0, 0}});
    EXPECT_EQ(tall.structural_rank, 1);
    EXPECT_EQ(tall.overdetermined_rows, (std::vector<int>{0, 1, 2}));
    EXPECT_NE(explain_structure(tall, {}, {}, 2).find("2 equations too many among equations 0, 1 and 1 more"),
              std::string::npos);

    const StructuralReport ok = analyse_structure(TripletPattern{2, 2, {0, 1, 1}, {1, 0, 1}});
    EXPECT_TRUE(ok.nonsingular());
    EXPECT_EQ(explain_structure(ok), "2 equations in 2 unknowns, structural rank 2: structurally nonsingular.");
}
