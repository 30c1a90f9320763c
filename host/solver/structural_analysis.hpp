// Structural (pattern-only) analysis of an equation system: a maximum matching
// of equations (rows) to unknowns (columns), the structural rank, and, when the
// system is not structurally nonsingular, which equations over-determine and
// which unknowns under-determine it.
//
// The matching itself is not unique, so the unmatched rows and columns are just
// one valid answer. The over- and under-determined parts are the coarse
// Dulmage-Mendelsohn blocks, which are unique: every equation that could be
// left unmatched by some maximum matching is in the over-determined part, and
// likewise for unknowns. They are what a user should be shown.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "solver/sparse_pattern.hpp"

namespace zx::solve {

struct StructuralReport {
    int n_rows = 0;
    int n_cols = 0;
    int structural_rank = 0;

    std::vector<int> column_of_row;  // matched unknown of each equation, -1 if none
    std::vector<int> row_of_column;  // matched equation of each unknown, -1 if none
    std::vector<int> unmatched_rows;  // ascending
    std::vector<int> unmatched_cols;  // ascending

    // Equations reachable from an unmatched equation along alternating paths,
    // and the unknowns they contain: more equations than unknowns.
    std::vector<int> overdetermined_rows;
    std::vector<int> overdetermined_cols;
    // Unknowns reachable from an unmatched unknown along alternating paths, and
    // the equations containing them: more unknowns than equations.
    std::vector<int> underdetermined_rows;
    std::vector<int> underdetermined_cols;

    bool nonsingular() const { return n_rows == n_cols && structural_rank == n_rows; }
};

StructuralReport analyse_structure(const CscPattern& pattern);
// Throws std::invalid_argument for a malformed pattern (see CscPattern).
StructuralReport analyse_structure(const TripletPattern& pattern);

using IndexNamer = std::function<std::string(int)>;

// A few sentences for the user. Equations and unknowns are named through the
// given functions (plain indices when empty); at most max_listed of each set
// are written, followed by a count of the rest.
std::string explain_structure(const StructuralReport& report,
                              const IndexNamer& equation_name = {},
                              const IndexNamer& unknown_name = {},
                              std::size_t max_listed = 10);

}  // namespace zx::solve
