// Sparsity patterns of equation systems: the triplet list a system declares and
// the compressed-column form the sparse factorisation needs.
//
// A CscPattern is built once per pattern. Each Jacobian evaluation delivers its
// values in triplet order; scatter() sums them into the compressed-column value
// array through a precomputed slot map, in O(nnz) and without allocating.
#pragma once

#include <vector>

namespace zx::solve {

// One (row, col) pair per Jacobian entry, in the order the system writes the
// values. Repeated pairs are allowed; their values are summed.
struct TripletPattern {
    int n_rows = 0;
    int n_cols = 0;
    std::vector<int> rows;
    std::vector<int> cols;

    int size() const { return static_cast<int>(rows.size()); }
    void add(int row, int col) {
        rows.push_back(row);
        cols.push_back(col);
    }
};

struct CscPattern {
    int n_rows = 0;
    int n_cols = 0;
    std::vector<int> col_start;        // n_cols + 1 offsets into row_index
    std::vector<int> row_index;        // ascending within a column, no repeats
    std::vector<int> slot_of_triplet;  // triplet k -> its position in row_index

    // Throws std::invalid_argument naming the offending entry if the pattern
    // has mismatched row/col lists or an index outside the matrix.
    static CscPattern from_triplets(const TripletPattern& triplets);

    int nnz() const { return static_cast<int>(row_index.size()); }
    int n_triplets() const { return static_cast<int>(slot_of_triplet.size()); }

    // csc_values[slot] = sum of triplet_values[k] over triplets k in that slot.
    void scatter(const double* triplet_values, double* csc_values) const;
};

}  // namespace zx::solve
