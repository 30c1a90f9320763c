// Damped Newton solver for square sparse steady-state systems with box bounds
// on every unknown.
//
// The Newton loop is written here rather than taken from KINSOL because
// KINSOL's constraints only express signs (x >= 0, x <= 0, x > 0, x < 0), not
// a general [lower, upper] box per unknown, and the flowsheet unknowns need
// steps truncated at those bounds. The linear algebra is still KLU.
//
// Each iteration: evaluate the Jacobian, factorise it (refactorising with the
// previous pivot order when that stays well-conditioned), solve for the Newton
// step, shorten it so that every unknown stays inside its bounds, and backtrack
// along it until the scaled residual norm decreases enough (Armijo).
//
// Scaling: residual i is divided by s_i = max(1, max_j |J_ij|), taken from the
// latest Jacobian. r_i / s_i is about the change of the unknown with the
// largest coefficient needed to satisfy equation i, so an equation written in
// large units (a heat balance in W next to a mole-fraction sum) does not
// dominate the test, while the floor of 1 keeps equations with small
// coefficients from being amplified. Convergence is max_i |r_i / s_i| <=
// tolerance; the line search uses 0.5 * sum_i (r_i / s_i)^2 with the scales
// held fixed within one iteration.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "solver/sparse_pattern.hpp"
#include "solver/structural_analysis.hpp"

namespace zx::solve {

class SparseSystem {
public:
    virtual ~SparseSystem() = default;
    virtual const TripletPattern& pattern() const = 0;           // square n x n
    // r has n entries, values are in triplet order. False when the model could not evaluate
    // them; failure() then says why, and the solve stops with ModelFailure.
    virtual bool residuals(const double* x, double* r) = 0;
    virtual bool jacobian(const double* x, double* values) = 0;
    virtual std::string failure() const { return {}; }
    // The pattern already compressed, when the caller has it (it must be built from
    // pattern()); null makes the solver compress it itself.
    virtual const CscPattern* compressed_pattern() const { return nullptr; }
    // Systems that bring a compressed pattern may write their Jacobian straight into its value
    // slots (entries that share a slot summed); the solver then keeps no values in triplet order.
    virtual bool writes_compressed() const { return false; }
    virtual bool jacobian_compressed(const double* /*x*/, double* /*csc_values*/) { return false; }
};

enum class SolveStatus {
#define ZX_SOLVE_STATUS(name, text) name,
#include "solver/solve_status.def"
};

// The user-facing text of a status.
const char* status_text(SolveStatus status);
// The enumerator's name, for logs and test output.
const char* status_name(SolveStatus status);

struct SolverOptions {
    int max_iterations = 50;
    double tolerance = 1e-8;         // on max_i |r_i / s_i|, see the scaling note above
    double min_step = 1e-10;         // give up when max_i |dx_i| / max(1, |x_i|) gets below this
    bool verbose_log = true;         // keep one IterationRecord per iteration in SolveResult::log
    double boundary_fraction = 0.995;  // a bound-limited step covers this much of the gap to the bound
    double armijo = 1e-4;            // sufficient-decrease constant of the line search
    int max_backtracks = 30;
    double refactor_rcond_drop = 1e-3;  // see KluFactorization::set_thresholds
    double singular_rcond = 1e-14;
    int report_residuals = 5;        // largest residuals listed on failure
};

struct IterationRecord {
    int iteration = 0;          // 0 is the initial point
    double residual_norm = 0.0;  // scaled max norm after the iteration, with the row scales
                                 // of the Jacobian its step came from
    double step_norm = 0.0;      // max_i |dx_i| / max(1, |x_i|) of the step taken
    double damping = 0.0;        // fraction of the full Newton step taken
};

struct SolveResult {
    using Status = SolveStatus;
    Status status = Status::InvalidInput;
    int iterations = 0;
    double residual_norm = 0.0;  // scaled max norm at the returned point
    std::vector<IterationRecord> log;
    std::string message;

    // On failure: the equations with the largest scaled residuals at the
    // returned point, as (equation index, unscaled residual), worst first.
    std::vector<std::pair<int, double>> largest_residuals;
    // SingularJacobian: the unknown where the zero pivot appeared, if known.
    int singular_column = -1;
    // NonFiniteResidual: the equation whose residual is not finite.
    int non_finite_row = -1;
    // StructurallySingular: which equations and unknowns are at fault.
    StructuralReport structure;

    double analyse_seconds = 0.0;  // compressed-column pattern and KLU ordering
    double factor_seconds = 0.0;   // fresh factorisations and refactorisations
    double solve_seconds = 0.0;    // triangular solves
    double total_seconds = 0.0;    // everything, model evaluations included
    int residual_evaluations = 0;
    int jacobian_evaluations = 0;
    int fresh_factorizations = 0;
    int refactorizations = 0;
};

// Solves system(x) = 0 from the starting point in x, keeping lower <= x <= upper
// (bounds may be infinite). A starting point outside the bounds is first moved
// onto them. Except for InvalidInput, which leaves x untouched, x holds the last
// accepted iterate on return. on_iteration, if given, sees every record as it
// is made, whether or not the log keeps it.
SolveResult solve(SparseSystem& system, std::vector<double>& x, const std::vector<double>& lower,
                  const std::vector<double>& upper, const SolverOptions& options,
                  std::function<void(const IterationRecord&)> on_iteration = {});

}  // namespace zx::solve
