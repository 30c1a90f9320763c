#include "solver/structural_analysis.hpp"

#include <suitesparse/btf.h>

#include <algorithm>

namespace zx::solve {

namespace {

std::vector<int> sorted_true(const std::vector<char>& flags) {
    std::vector<int> out;
    for (int i = 0; i < static_cast<int>(flags.size()); ++i) {
        if (flags[i]) out.push_back(i);
    }
    return out;
}

// Row-wise adjacency (the transpose of the column form), for walking from an
// equation to its unknowns.
void build_rows(const CscPattern& p, std::vector<int>& row_start, std::vector<int>& col_index) {
    row_start.assign(static_cast<std::size_t>(p.n_rows) + 1, 0);
    col_index.resize(p.row_index.size());
    for (int i : p.row_index) ++row_start[i + 1];
    for (int i = 0; i < p.n_rows; ++i) row_start[i + 1] += row_start[i];
    std::vector<int> next(row_start.begin(), row_start.end() - 1);
    for (int j = 0; j < p.n_cols; ++j) {
        for (int k = p.col_start[j]; k < p.col_start[j + 1]; ++k) col_index[next[p.row_index[k]]++] = j;
    }
}

// Alternating-path search from every unmatched vertex on one side. Going out
// of a vertex follows any pattern edge; coming back follows the matching.
// Returns the visited vertices of the starting side and of the other side.
void alternating_reach(int n_from, int n_to, const std::vector<int>& start,
                       const std::vector<int>& adj, const std::vector<int>& match_from,
                       const std::vector<int>& match_to, std::vector<char>& seen_from,
                       std::vector<char>& seen_to) {
    seen_from.assign(n_from, 0);
    seen_to.assign(n_to, 0);
    std::vector<int> stack;
    for (int v = 0; v < n_from; ++v) {
        if (match_from[v] < 0) {
            seen_from[v] = 1;
            stack.push_back(v);
        }
    }
    while (!stack.empty()) {
        const int v = stack.back();
        stack.pop_back();
        for (int k = start[v]; k < start[v + 1]; ++k) {
            const int w = adj[k];
            if (seen_to[w]) continue;
            seen_to[w] = 1;
            const int back = match_to[w];  // matched in any maximum matching
            if (back >= 0 && !seen_from[back]) {
                seen_from[back] = 1;
                stack.push_back(back);
            }
        }
    }
}

std::string list_names(const std::vector<int>& idx, const IndexNamer& name, std::size_t max_listed) {
    std::string out;
    const std::size_t shown = std::min(idx.size(), max_listed);
    for (std::size_t k = 0; k < shown; ++k) {
        if (k) out += ", ";
        out += name ? name(idx[k]) : std::to_string(idx[k]);
    }
    if (idx.size() > shown) out += " and " + std::to_string(idx.size() - shown) + " more";
    return out;
}

std::string plural(std::size_t n, const char* word) {
    return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
}

}  // namespace

StructuralReport analyse_structure(const CscPattern& p) {
    StructuralReport rep;
    rep.n_rows = p.n_rows;
    rep.n_cols = p.n_cols;
    rep.column_of_row.assign(p.n_rows, -1);
    rep.row_of_column.assign(p.n_cols, -1);

    // btf_maxtrans accepts rectangular matrices: Match has one entry per row
    // and its workspace is sized by the column count. The extra max(rows,cols)
    // is only a margin.
    if (p.n_rows > 0 && p.n_cols > 0) {
        std::vector<int> work(5 * static_cast<std::size_t>(std::max(p.n_rows, p.n_cols)));
        double work_done = 0.0;
        rep.structural_rank = btf_maxtrans(p.n_rows, p.n_cols, const_cast<int*>(p.col_start.data()),
                                           const_cast<int*>(p.row_index.data()), 0.0, &work_done,
                                           rep.column_of_row.data(), work.data());
    }
    for (int i = 0; i < p.n_rows; ++i) {
        const int j = rep.column_of_row[i];
        if (j >= 0) rep.row_of_column[j] = i;
        else rep.unmatched_rows.push_back(i);
    }
    for (int j = 0; j < p.n_cols; ++j) {
        if (rep.row_of_column[j] < 0) rep.unmatched_cols.push_back(j);
    }

    std::vector<char> seen_rows, seen_cols;
    if (!rep.unmatched_rows.empty()) {
        std::vector<int> row_start, col_index;
        build_rows(p, row_start, col_index);
        alternating_reach(p.n_rows, p.n_cols, row_start, col_index, rep.column_of_row,
                          rep.row_of_column, seen_rows, seen_cols);
        rep.overdetermined_rows = sorted_true(seen_rows);
        rep.overdetermined_cols = sorted_true(seen_cols);
    }
    if (!rep.unmatched_cols.empty()) {
        alternating_reach(p.n_cols, p.n_rows, p.col_start, p.row_index, rep.row_of_column,
                          rep.column_of_row, seen_cols, seen_rows);
        rep.underdetermined_rows = sorted_true(seen_rows);
        rep.underdetermined_cols = sorted_true(seen_cols);
    }
    return rep;
}

StructuralReport analyse_structure(const TripletPattern& pattern) {
    return analyse_structure(CscPattern::from_triplets(pattern));
}

std::string explain_structure(const StructuralReport& r, const IndexNamer& equation_name,
                              const IndexNamer& unknown_name, std::size_t max_listed) {
    std::string out = plural(r.n_rows, "equation") + " in " + plural(r.n_cols, "unknown") +
                      ", structural rank " + std::to_string(r.structural_rank);
    if (r.nonsingular()) return out + ": structurally nonsingular.";
    out += ".";
    if (!r.overdetermined_rows.empty()) {
        out += " Over-determined: " + plural(r.unmatched_rows.size(), "equation") +
               " too many among equations " +
               list_names(r.overdetermined_rows, equation_name, max_listed);
        out += r.overdetermined_cols.empty()
                   ? ", which contain no unknowns."
                   : ", which contain only unknowns " +
                         list_names(r.overdetermined_cols, unknown_name, max_listed) + ".";
    }
    if (!r.underdetermined_cols.empty()) {
        out += " Under-determined: " + plural(r.unmatched_cols.size(), "unknown") +
               " too many among unknowns " +
               list_names(r.underdetermined_cols, unknown_name, max_listed);
        out += r.underdetermined_rows.empty()
                   ? ", which appear in no equation."
                   : ", which appear only in equations " +
                         list_names(r.underdetermined_rows, equation_name, max_listed) + ".";
    }
    return out;
}

}  // namespace zx::solve
