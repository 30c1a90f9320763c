#include "checks/jacobian_check.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <queue>

#include "solver/sparse_pattern.hpp"

namespace zx::checks {
namespace {

// The one pass rule: an entry passes when its scaled error is at most 1. Why these numbers.
// The truncation error of a central difference, h^2/6 * |f'''|, is zero for the multilinear
// equations models mostly consist of and about 1e-11 relative otherwise with the default
// h = 6e-6 * max(1, |x|), a step near the cube root of the machine epsilon, where truncation
// and rounding balance. Rounding: each residual carries a few ulps of its magnitude, which
// the quotient divides by 2h; the allowance covers it with a factor of 100 to spare (it
// matters for residuals that are large beside their derivatives). Beyond that, a tolerance of
// 1e-5 relative to the larger of 1, the analytic value and the difference passes every correct
// entry by orders of magnitude, while a wrong formula (a missing factor, a wrong sign, a term
// with the wrong variable) is off by O(1).
double ScaledError(double analytic, double fd, double rPlus, double rMinus, double twoH, double tolerance) {
    const double rounding = 100.0 * std::numeric_limits<double>::epsilon() * std::max(std::fabs(rPlus), std::fabs(rMinus)) / twoH;
    return std::fabs(analytic - fd) / (tolerance * std::max({1.0, std::fabs(analytic), std::fabs(fd)}) + rounding);
}

// Groups of columns that share no row: within a group, each row moves with one column only.
// byRow is the transposed pattern (the columns of each row).
std::vector<std::vector<int>> ColourColumns(const zx::solve::CscPattern& csc, const zx::solve::CscPattern& byRow) {
    std::vector<int> colour(csc.n_cols, -1), usedBy;
    std::vector<std::vector<int>> groups;
    for (int c = 0; c < csc.n_cols; ++c) {
        for (int s = csc.col_start[c]; s < csc.col_start[c + 1]; ++s) {
            const int row = csc.row_index[s];
            for (int t = byRow.col_start[row]; t < byRow.col_start[row + 1]; ++t)
                if (const int k = colour[byRow.row_index[t]]; k >= 0) usedBy[k] = c;
        }
        int k = 0;
        while (k < static_cast<int>(groups.size()) && usedBy[k] == c) ++k;
        if (k == static_cast<int>(groups.size())) {
            groups.emplace_back();
            usedBy.push_back(-1);
        }
        colour[c] = k;
        groups[k].push_back(c);
    }
    return groups;
}

struct WorseFirst {
    bool operator()(const JacobianEntryCheck& a, const JacobianEntryCheck& b) const { return a.scaledError > b.scaledError; }
};

class Checker {
public:
    Checker(CheckedSystem& system, const JacobianCheckOptions& options)
        : m_system(system), m_options(options), m_rp(system.Rows()), m_rm(system.Rows()) {
        for (int c = 0; c < system.Columns(); ++c) m_x0.push_back(system.Value(c));
    }
    ~Checker() {
        for (int c = 0; c < static_cast<int>(m_x0.size()); ++c) m_system.SetValue(c, m_x0[c]);
    }
    Checker(const Checker&) = delete;
    Checker& operator=(const Checker&) = delete;

    // Residuals at +h and -h of the columns perturbed together; false when the system failed.
    bool Difference(const std::vector<int>& group) {
        auto move = [&](double sign) {
            for (int c : group) m_system.SetValue(c, m_x0[c] + sign * Step(c));
        };
        move(+1.0);
        bool ok = m_system.Residuals(m_rp.data());
        move(-1.0);
        ok = m_system.Residuals(m_rm.data()) && ok;
        move(0.0);
        m_result.residualEvaluations += 2;
        return ok;
    }
    double Step(int c) const { return m_options.relativeStep * std::max(1.0, std::fabs(m_x0[c])); }
    // The entry (row, column) of the last difference, taken over a step h.
    JacobianEntryCheck Compare(int row, int column, double analytic, double h, bool declared) const {
        const double fd = (m_rp[row] - m_rm[row]) / (2.0 * h);
        const double err = ScaledError(analytic, fd, m_rp[row], m_rm[row], 2.0 * h, m_options.tolerance);
        return JacobianEntryCheck{row, column, {}, {}, analytic, fd, err, declared};
    }
    // A NaN error fails and ranks first.
    void Record(JacobianEntryCheck e) {
        if (std::isnan(e.scaledError)) e.scaledError = INFINITY;
        if (e.scaledError > 1.0) ++m_result.failures;
        m_worst.push(std::move(e));
        if (static_cast<int>(m_worst.size()) > m_options.worstListed) m_worst.pop();
    }
    JacobianCheckResult& Result() { return m_result; }
    JacobianCheckResult Finish() {
        for (; !m_worst.empty(); m_worst.pop()) m_result.worst.push_back(m_worst.top());
        std::reverse(m_result.worst.begin(), m_result.worst.end());
        for (JacobianEntryCheck& e : m_result.worst) {
            e.rowName = m_system.RowName(e.row);
            e.columnName = m_system.ColumnName(e.column);
        }
        return std::move(m_result);
    }

private:
    CheckedSystem& m_system;
    JacobianCheckOptions m_options;
    std::vector<double> m_x0, m_rp, m_rm;
    JacobianCheckResult m_result;
    std::priority_queue<JacobianEntryCheck, std::vector<JacobianEntryCheck>, WorseFirst> m_worst;
};

// Groups whose undeclared dependences are traced column by column (each costs two residual
// evaluations per column of the group).
constexpr int kTracedGroups = 3;

}  // namespace

JacobianCheckResult CheckJacobian(CheckedSystem& system, const JacobianCheckOptions& options) {
    const std::span<const int> entryRows = system.EntryRows(), entryCols = system.EntryColumns();
    zx::solve::TripletPattern pattern{system.Rows(), system.Columns(), {entryRows.begin(), entryRows.end()},
                                      {entryCols.begin(), entryCols.end()}};
    const zx::solve::CscPattern csc = zx::solve::CscPattern::from_triplets(pattern);
    std::swap(pattern.n_rows, pattern.n_cols);
    std::swap(pattern.rows, pattern.cols);
    const zx::solve::CscPattern byRow = zx::solve::CscPattern::from_triplets(pattern);

    Checker checker(system, options);
    JacobianCheckResult& result = checker.Result();
    result.entries = csc.nnz();
    result.columns = csc.n_cols;
    std::vector<double> values(entryRows.size()), analytic(csc.nnz());
    if (!system.Jacobian(values.data())) {
        result.evaluationFailed = true;
        return checker.Finish();
    }
    csc.scatter(values.data(), analytic.data());

    const auto groups = ColourColumns(csc, byRow);
    result.groups = static_cast<int>(groups.size());
    std::vector<int> touchedBy(csc.n_rows, -1);
    int traced = 0;
    for (int g = 0; g < result.groups && !result.evaluationFailed; ++g) {
        const std::vector<int>& group = groups[g];
        if (!checker.Difference(group)) {
            result.evaluationFailed = true;
            break;
        }
        double smallestStep = INFINITY;
        for (int c : group) {
            smallestStep = std::min(smallestStep, checker.Step(c));
            for (int s = csc.col_start[c]; s < csc.col_start[c + 1]; ++s) {
                touchedBy[csc.row_index[s]] = g;
                checker.Record(checker.Compare(csc.row_index[s], c, analytic[s], checker.Step(c), true));
            }
        }
        // Rows that moved although none of their declared columns did; the smallest step of
        // the group bounds the derivative from above. A row that is NaN anyway is not counted
        // again for every group.
        std::vector<int> moved;
        for (int row = 0; row < csc.n_rows; ++row)
            if (touchedBy[row] != g && checker.Compare(row, group.front(), 0.0, smallestStep, false).scaledError > 1.0)
                moved.push_back(row);
        if (moved.empty()) continue;
        if (traced++ >= kTracedGroups) {
            result.failures += static_cast<int>(moved.size());
            continue;
        }
        for (int c : group) {
            if (!checker.Difference({c})) {
                result.evaluationFailed = true;
                break;
            }
            for (int row : moved)
                if (JacobianEntryCheck e = checker.Compare(row, c, 0.0, checker.Step(c), false); e.finiteDifference != 0.0)
                    checker.Record(std::move(e));
        }
    }
    return checker.Finish();
}

}  // namespace zx::checks
