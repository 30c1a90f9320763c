#include "solver/sparse_pattern.hpp"

#include <algorithm>
#include <climits>
#include <stdexcept>
#include <string>

namespace zx::solve {

namespace {

void check_triplets(const TripletPattern& t) {
    if (t.n_rows < 0 || t.n_cols < 0) {
        throw std::invalid_argument("Jacobian pattern has negative dimensions " +
                                    std::to_string(t.n_rows) + " x " +
                                    std::to_string(t.n_cols));
    }
    if (t.rows.size() != t.cols.size()) {
        throw std::invalid_argument("Jacobian pattern has " + std::to_string(t.rows.size()) +
                                    " row indices but " + std::to_string(t.cols.size()) +
                                    " column indices");
    }
    if (t.rows.size() > static_cast<std::size_t>(INT_MAX)) {
        throw std::invalid_argument("Jacobian pattern has " + std::to_string(t.rows.size()) +
                                    " entries, more than a 32-bit index can address");
    }
    for (std::size_t k = 0; k < t.rows.size(); ++k) {
        if (t.rows[k] < 0 || t.rows[k] >= t.n_rows) {
            throw std::invalid_argument("Jacobian pattern entry " + std::to_string(k) + " has row " +
                                        std::to_string(t.rows[k]) + " outside 0.." +
                                        std::to_string(t.n_rows - 1));
        }
        if (t.cols[k] < 0 || t.cols[k] >= t.n_cols) {
            throw std::invalid_argument("Jacobian pattern entry " + std::to_string(k) +
                                        " has column " + std::to_string(t.cols[k]) +
                                        " outside 0.." + std::to_string(t.n_cols - 1));
        }
    }
}

}  // namespace

CscPattern CscPattern::from_triplets(const TripletPattern& t) {
    check_triplets(t);
    const int nt = t.size();

    // Two counting-sort passes (by row, then stably by column) leave the
    // triplets grouped by column with ascending rows, so repeats are adjacent.
    std::vector<int> start(static_cast<std::size_t>(std::max(t.n_rows, t.n_cols)) + 1, 0);
    std::vector<int> by_row(nt), by_col(nt);

    std::fill(start.begin(), start.begin() + t.n_rows + 1, 0);
    for (int k = 0; k < nt; ++k) ++start[t.rows[k] + 1];
    for (int i = 0; i < t.n_rows; ++i) start[i + 1] += start[i];
    for (int k = 0; k < nt; ++k) by_row[start[t.rows[k]]++] = k;

    std::fill(start.begin(), start.begin() + t.n_cols + 1, 0);
    for (int k = 0; k < nt; ++k) ++start[t.cols[k] + 1];
    for (int j = 0; j < t.n_cols; ++j) start[j + 1] += start[j];
    for (int k : by_row) by_col[start[t.cols[k]]++] = k;

    CscPattern p;
    p.n_rows = t.n_rows;
    p.n_cols = t.n_cols;
    p.col_start.assign(static_cast<std::size_t>(t.n_cols) + 1, 0);
    p.row_index.reserve(nt);
    p.slot_of_triplet.resize(nt);

    int pos = 0;
    for (int j = 0; j < t.n_cols; ++j) {
        const int col_begin = p.nnz();
        for (; pos < nt && t.cols[by_col[pos]] == j; ++pos) {
            const int k = by_col[pos];
            if (p.nnz() == col_begin || p.row_index.back() != t.rows[k]) {
                p.row_index.push_back(t.rows[k]);
            }
            p.slot_of_triplet[k] = p.nnz() - 1;
        }
        p.col_start[j + 1] = p.nnz();
    }
    p.row_index.shrink_to_fit();
    return p;
}

void CscPattern::scatter(const double* triplet_values, double* csc_values) const {
    std::fill(csc_values, csc_values + row_index.size(), 0.0);
    const int nt = n_triplets();
    for (int k = 0; k < nt; ++k) csc_values[slot_of_triplet[k]] += triplet_values[k];
}

}  // namespace zx::solve
