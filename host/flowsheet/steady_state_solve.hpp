#pragma once
// The steady-state solve of a flowsheet: Newton from the variables' current values inside
// their bounds, an iteration log, and on failure a report of the largest residuals by block
// and equation.
#include <iosfwd>

#include "solver/newton_solver.hpp"

namespace zx::flowsheet {

class EquationSystem;

// Solves the (square, structurally nonsingular) system; the unknowns' variables hold the last
// accepted iterate afterwards. With log, one line per iteration is written to it.
zx::solve::SolveResult SolveSteadyState(const EquationSystem& system, const zx::solve::SolverOptions& options,
                                        std::ostream* log);

// Why the solve failed, naming the equations with the largest residuals (and the unknown of a
// zero pivot).
void WriteFailureReport(const EquationSystem& system, const zx::solve::SolveResult& result, std::ostream& out);

// The status as JSON and files write it: "converged", "max_iterations", ...
std::string StatusKey(zx::solve::SolveStatus status);

}  // namespace zx::flowsheet
