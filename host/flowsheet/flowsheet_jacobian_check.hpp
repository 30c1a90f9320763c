#pragma once
// The Jacobian check of a whole flowsheet: its equation system seen by the common check (rows
// and columns of the system, fixed variables included), and the report the command writes.
#include <iosfwd>

#include "checks/jacobian_check.hpp"

namespace zx::flowsheet {

class EquationSystem;

using zx::checks::JacobianCheckOptions;
using zx::checks::JacobianCheckResult;
using zx::checks::JacobianEntryCheck;

// Variables are restored to their values afterwards.
JacobianCheckResult CheckJacobian(const EquationSystem& system, const JacobianCheckOptions& options);

// The entries carry their names already; the system is not needed any more.
void WriteJacobianCheck(const EquationSystem&, const JacobianCheckResult& result, const JacobianCheckOptions& options,
                        std::ostream& out);

}  // namespace zx::flowsheet
