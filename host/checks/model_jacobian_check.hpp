// Checks of one model object after SetUpEquations and JacPattern, given the pattern JacPattern
// wrote: rows from the model's Residuals start index on, columns of the current session.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "checks/jacobian_check.hpp"

class VX_ModelType;

namespace zx::checks {

// Whether the model's answers agree with each other: the nonzeros CountEqnsAndNZs declares,
// the entries JacPattern gave, the counts Jacobian and Residuals return, no write past either
// block, pattern rows inside the model's block and pattern columns naming variables of the
// session. One line per disagreement, none when all agree.
std::vector<std::string> CheckModelStructure(VX_ModelType& model, std::span<const int> rows, std::span<const int> cols,
                                             int firstRow = 0);

// The Jacobian check of the model alone, over the pattern's rows less firstRow and the
// session's columns. Run CheckModelStructure first: a pattern it rejects may throw here.
JacobianCheckResult CheckModelJacobian(VX_ModelType& model, std::span<const int> rows, std::span<const int> cols,
                                       const JacobianCheckOptions& options = {}, int firstRow = 0);

}  // namespace zx::checks
