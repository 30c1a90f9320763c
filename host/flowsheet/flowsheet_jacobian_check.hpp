#pragma once
// Checks every analytic Jacobian entry of a whole flowsheet against central finite differences
// of the residuals, at the variables' current values. Columns that share no equation are
// perturbed together (a greedy colouring of the pattern), so a banded flowsheet of a million
// cells needs a handful of residual evaluations, not two per column. A residual that moves
// when no variable it declares was perturbed reveals an undeclared dependence; the columns of
// that group are then perturbed one by one to name the missing entry.
#include <iosfwd>
#include <vector>

namespace zx::flowsheet {

class EquationSystem;

struct JacobianCheckOptions {
    double relativeStep = 6e-6;   // h_j = relativeStep * max(1, |x_j|)
    double tolerance = 1e-5;      // on |analytic - fd| / max(1, |analytic|, |fd|)
    int worstListed = 10;
};

struct JacobianEntryCheck {
    int row = 0;
    int column = 0;            // column of the system (fixed variables included)
    double analytic = 0.0;     // 0 for an entry the blocks do not declare
    double finiteDifference = 0.0;
    double error = 0.0;
    bool declared = true;
};

struct JacobianCheckResult {
    int entries = 0;           // distinct (row, column) entries compared
    int columns = 0;
    int groups = 0;
    int residualEvaluations = 0;
    int failures = 0;          // entries (declared or not) beyond the tolerance
    bool evaluationFailed = false;   // a block reported a failure while evaluating
    std::vector<JacobianEntryCheck> worst;   // largest errors first
};

// Variables are restored to their values afterwards.
JacobianCheckResult CheckJacobian(const EquationSystem& system, const JacobianCheckOptions& options);

void WriteJacobianCheck(const EquationSystem& system, const JacobianCheckResult& result,
                        const JacobianCheckOptions& options, std::ostream& out);

}  // namespace zx::flowsheet
