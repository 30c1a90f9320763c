// Ranking of residuals for failure reports.
#pragma once

#include <utility>
#include <vector>

namespace zx::solve {

// The k entries of r[0..n) largest in magnitude, as (index, value), largest
// first; ties keep ascending index. Non-finite values rank above every finite
// one, since they are usually the first thing to fix.
std::vector<std::pair<int, double>> largest_residuals(const double* r, int n, int k);

}  // namespace zx::solve
