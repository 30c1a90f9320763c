// Checks of what a protocol driver holds (one model with everything it contains, or several)
// after its SetUpEquations: that the units' answers agree with each other and stay inside their
// blocks, and that the analytic Jacobian agrees with finite differences over the session's
// columns (parameters included: their entries are sensitivities).
#pragma once

#include <string>
#include <vector>

#include "checks/jacobian_check.hpp"

class VX_ProtocolDriver;

namespace zx::checks {

// Whether the units' answers agree with each other: the pattern JacPattern gives, the counts
// Jacobian and Residuals return, and no write past either array. One line per disagreement,
// none when all agree.
std::vector<std::string> CheckDriverStructure(VX_ProtocolDriver& driver);

// The Jacobian check over the driver's rows and the session's columns. Run
// CheckDriverStructure first.
JacobianCheckResult CheckDriverJacobian(VX_ProtocolDriver& driver, const JacobianCheckOptions& options = {});

}  // namespace zx::checks
