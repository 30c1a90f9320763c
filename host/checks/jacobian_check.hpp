// Check of a model's analytic Jacobian against central finite differences of its residuals,
// and of its sparsity pattern against the counts its SetUpEquations declared.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "zorexp/model_type.hpp"

namespace zx::checks {

struct JacobianCheckOptions {
    // Step for variable x: relative_step * max(|x|, 1).
    double relative_step = 1e-6;
    // An entry passes when |analytic - numeric| <= tolerance * max(1, |analytic|) plus the
    // rounding allowance of the difference quotient (see jacobian_check.cpp).
    double tolerance = 1e-5;
    // How many of the worst entries the result keeps.
    int report_worst = 10;
    // Row index of the model's first equation in the pattern (its Residuals start index).
    int first_row = 0;
};

// One Jacobian entry compared. An entry the pattern lacks although the residual depends on the
// variable appears with in_pattern false and analytic 0.
struct JacobianEntryCheck {
    int row = 0;                  // pattern row
    std::string row_label;        // "VX_Eqn1"
    int column = 0;               // session column
    std::string variable;         // "T_PROCESS(0)"
    double analytic = 0.0;        // sum of the analytic values of the entry
    double numeric = 0.0;         // central difference
    double scaled_error = 0.0;    // |analytic - numeric| / allowed error; above 1 fails
    bool in_pattern = true;
};

struct JacobianCheckResult {
    int equations = 0;            // CountEqnsAndNZs
    int nonzeros_declared = 0;    // CountEqnsAndNZs (the AddNonZero calls of SetUpEquations)
    int nonzeros_pattern = 0;     // entries JacPattern gave
    int nonzeros_written = 0;     // entries Jacobian(values, 0, 0) wrote (its return value)
    int residuals_written = 0;    // rows Residuals(r, 0, first_row) wrote
    int entries_checked = 0;
    int entries_failed = 0;
    std::vector<std::string> problems;        // structural disagreements, in words
    std::vector<JacobianEntryCheck> worst;    // largest scaled error first
    bool ok() const { return problems.empty() && entries_failed == 0; }
};

// Checks a model after SetUpEquations and JacPattern, given the pattern JacPattern wrote (rows
// and columns of the current session). Every variable of the pattern is moved by +h and -h in
// turn and put back to its exact value afterwards, also when a model operation throws; the
// cost is two residual evaluations per column, which suits test-sized models.
JacobianCheckResult check_jacobian(VX_ModelType& model, std::span<const int> rows, std::span<const int> cols,
                                   const JacobianCheckOptions& options = {});

}  // namespace zx::checks
