#include "checks/jacobian_check.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "zorexp/session.hpp"
#include "zorexp/variable.hpp"

namespace zx::checks {

// Why these tolerances. The residuals of generated equations are sums of products in which
// every variable occurs to a low power, so the truncation error of a central difference,
// h^2/6 * |f'''|, is zero for the multilinear equations and about 1e-12 relative otherwise
// with h = 1e-6 * max(|x|, 1). What remains is rounding: each residual carries an error of a
// few ulps of its magnitude, which the quotient divides by 2h; the allowance below covers it
// with a factor of 100 to spare. Beyond that, a tolerance of 1e-5 relative to max(1, |J|)
// passes every correct entry with a margin of several orders of magnitude, while a wrong
// formula (a missing factor, a wrong sign, a term with the wrong variable) is off by O(1).

namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr int kGuard = 8;   // cells past the end that must stay untouched
const double kSentinel = std::numeric_limits<double>::quiet_NaN();

bool Untouched(const std::vector<double>& v, std::size_t from) {
    for (std::size_t k = from; k < v.size(); ++k)
        if (!std::isnan(v[k])) return false;
    return true;
}

// Puts a variable back to its value when the check leaves its scope, however it leaves.
class RestoreValue {
public:
    explicit RestoreValue(VX_Variable& v) : m_var(v), m_value(v.fv()) {}
    ~RestoreValue() { m_var.SetSolverValue(m_value); }
    RestoreValue(const RestoreValue&) = delete;
    RestoreValue& operator=(const RestoreValue&) = delete;
    double Value() const { return m_value; }

private:
    VX_Variable& m_var;
    double m_value;
};

}  // namespace

JacobianCheckResult check_jacobian(VX_ModelType& model, std::span<const int> rows, std::span<const int> cols,
                                   const JacobianCheckOptions& options) {
    JacobianCheckResult result;
    model.CountEqnsAndNZs(result.equations, result.nonzeros_declared);
    result.nonzeros_pattern = static_cast<int>(rows.size());
    const int first = options.first_row;
    const int neq = result.equations;

    if (rows.size() != cols.size()) {
        result.problems.push_back("the pattern has " + std::to_string(rows.size()) + " rows but " +
                                  std::to_string(cols.size()) + " columns");
        return result;
    }
    if (result.nonzeros_declared != result.nonzeros_pattern)
        result.problems.push_back("SetUpEquations declared " + std::to_string(result.nonzeros_declared) +
                                  " nonzeros, JacPattern gave " + std::to_string(result.nonzeros_pattern));

    const auto& columns = VX_Session::Current().Columns();
    // Analytic entries by column, then row; duplicates of one (row, column) add up, as they do
    // when a solver assembles the matrix.
    std::vector<double> values(rows.size() + kGuard, kSentinel);
    result.nonzeros_written = model.Jacobian(values.data(), 0, 0);
    if (result.nonzeros_written != result.nonzeros_pattern)
        result.problems.push_back("Jacobian returned " + std::to_string(result.nonzeros_written) + ", expected " +
                                  std::to_string(result.nonzeros_pattern) + " entries");
    if (!Untouched(values, rows.size())) {
        result.problems.push_back("Jacobian wrote past its " + std::to_string(rows.size()) + " entries");
        return result;
    }
    std::map<int, std::map<int, double>> byColumn;
    for (std::size_t k = 0; k < rows.size(); ++k) {
        if (rows[k] < first || rows[k] >= first + neq) {
            result.problems.push_back("pattern entry " + std::to_string(k) + " has row " + std::to_string(rows[k]) +
                                      " outside rows " + std::to_string(first) + ".." + std::to_string(first + neq - 1));
            return result;
        }
        if (cols[k] < 0 || cols[k] >= static_cast<int>(columns.size()) || !columns[static_cast<std::size_t>(cols[k])]) {
            result.problems.push_back("pattern entry " + std::to_string(k) + " has column " + std::to_string(cols[k]) +
                                      ", which names no variable of the session");
            return result;
        }
        byColumn[cols[k]][rows[k]] += values[k];
    }

    const auto rEnd = static_cast<std::size_t>(first + neq);
    // One residual evaluation; false (with the problem recorded once) when Residuals does not
    // write exactly its block.
    bool residualsOk = true;
    auto evaluate = [&](std::vector<double>& r) {
        std::fill(r.begin(), r.end(), kSentinel);
        const int end = model.Residuals(r.data(), 0, first);
        result.residuals_written = end - first;
        if (!residualsOk) return false;
        if (end != first + neq) {
            result.problems.push_back("Residuals returned " + std::to_string(end) + ", expected " + std::to_string(first + neq));
            residualsOk = false;
        } else if (!Untouched(r, rEnd)) {
            result.problems.push_back("Residuals wrote past its " + std::to_string(neq) + " rows");
            residualsOk = false;
        }
        return residualsOk;
    };
    std::vector<double> rPlus(rEnd + kGuard), rMinus(rEnd + kGuard);
    if (!evaluate(rPlus)) return result;

    std::vector<JacobianEntryCheck> all;
    for (const auto& [column, entries] : byColumn) {
        VX_Variable& var = *columns[static_cast<std::size_t>(column)];
        std::vector<double> numeric(static_cast<std::size_t>(neq));
        std::vector<double> rounding(static_cast<std::size_t>(neq));
        {
            RestoreValue restore(var);
            const double x = restore.Value();
            const double h = options.relative_step * std::max(std::fabs(x), 1.0);
            var.SetSolverValue(x + h);
            const double up = (x + h) - x;   // the steps actually taken, after rounding
            evaluate(rPlus);
            var.SetSolverValue(x - h);
            const double down = x - (x - h);
            evaluate(rMinus);
            for (int i = 0; i < neq; ++i) {
                const auto k = static_cast<std::size_t>(first + i);
                numeric[static_cast<std::size_t>(i)] = (rPlus[k] - rMinus[k]) / (up + down);
                rounding[static_cast<std::size_t>(i)] =
                    100.0 * kEps * std::max(std::fabs(rPlus[k]), std::fabs(rMinus[k])) / (up + down);
            }
        }
        const std::string path = var.Path();
        for (int i = 0; i < neq; ++i) {
            const int row = first + i;
            const auto found = entries.find(row);
            const bool inPattern = found != entries.end();
            const double analytic = inPattern ? found->second : 0.0;
            const double num = numeric[static_cast<std::size_t>(i)];
            const double allowed = options.tolerance * std::max(1.0, std::fabs(analytic)) + rounding[static_cast<std::size_t>(i)];
            const double err = std::fabs(analytic - num) / allowed;
            // Rows without an entry for this variable are reported only when they depend on it.
            if (!inPattern && !(err > 1.0)) continue;
            JacobianEntryCheck e;
            e.row = row;
            const char* label = model.RowLabel(i);
            e.row_label = label ? label : "";
            e.column = column;
            e.variable = path;
            e.analytic = analytic;
            e.numeric = num;
            e.scaled_error = std::isnan(err) ? std::numeric_limits<double>::infinity() : err;
            e.in_pattern = inPattern;
            ++result.entries_checked;
            if (!(err <= 1.0)) ++result.entries_failed;
            all.push_back(std::move(e));
        }
    }

    const auto keep = std::min(all.size(), static_cast<std::size_t>(std::max(options.report_worst, 0)));
    std::partial_sort(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(keep), all.end(),
                      [](const JacobianEntryCheck& a, const JacobianEntryCheck& b) { return a.scaled_error > b.scaled_error; });
    all.resize(keep);
    result.worst = std::move(all);
    return result;
}

}  // namespace zx::checks
