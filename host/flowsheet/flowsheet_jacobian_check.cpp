#include "flowsheet/flowsheet_jacobian_check.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <queue>

#include "flowsheet/equation_system.hpp"
#include "solver/sparse_pattern.hpp"
#include "zorexp/variable.hpp"

namespace zx::flowsheet {
namespace {

// Groups of columns that share no row: within a group, each row moves with one column only.
std::vector<std::vector<int>> ColourColumns(const zx::solve::CscPattern& csc) {
    const int nRows = csc.n_rows, nCols = csc.n_cols;
    // Rows as lists of columns.
    std::vector<int> rowStart(static_cast<std::size_t>(nRows) + 1, 0), rowCols(static_cast<std::size_t>(csc.nnz()));
    for (int s = 0; s < csc.nnz(); ++s) ++rowStart[static_cast<std::size_t>(csc.row_index[static_cast<std::size_t>(s)]) + 1];
    for (int i = 0; i < nRows; ++i) rowStart[static_cast<std::size_t>(i) + 1] += rowStart[static_cast<std::size_t>(i)];
    std::vector<int> fill(rowStart.begin(), rowStart.end() - 1);
    for (int c = 0; c < nCols; ++c)
        for (int s = csc.col_start[static_cast<std::size_t>(c)]; s < csc.col_start[static_cast<std::size_t>(c) + 1]; ++s)
            rowCols[static_cast<std::size_t>(fill[static_cast<std::size_t>(csc.row_index[static_cast<std::size_t>(s)])]++)] = c;

    std::vector<int> colour(static_cast<std::size_t>(nCols), -1), usedBy;
    std::vector<std::vector<int>> groups;
    for (int c = 0; c < nCols; ++c) {
        for (int s = csc.col_start[static_cast<std::size_t>(c)]; s < csc.col_start[static_cast<std::size_t>(c) + 1]; ++s) {
            const int i = csc.row_index[static_cast<std::size_t>(s)];
            for (int t = rowStart[static_cast<std::size_t>(i)]; t < rowStart[static_cast<std::size_t>(i) + 1]; ++t) {
                const int k = colour[static_cast<std::size_t>(rowCols[static_cast<std::size_t>(t)])];
                if (k >= 0) usedBy[static_cast<std::size_t>(k)] = c;
            }
        }
        int k = 0;
        while (k < static_cast<int>(groups.size()) && usedBy[static_cast<std::size_t>(k)] == c) ++k;
        if (k == static_cast<int>(groups.size())) {
            groups.emplace_back();
            usedBy.push_back(-1);
        }
        colour[static_cast<std::size_t>(c)] = k;
        groups[static_cast<std::size_t>(k)].push_back(c);
    }
    return groups;
}

double Error(double analytic, double fd) {
    return std::fabs(analytic - fd) / std::max({1.0, std::fabs(analytic), std::fabs(fd)});
}

struct WorseFirst {
    bool operator()(const JacobianEntryCheck& a, const JacobianEntryCheck& b) const { return a.error > b.error; }
};

class Checker {
public:
    Checker(const EquationSystem& system, const JacobianCheckOptions& options)
        : m_system(system), m_options(options), m_columns(system.Columns()),
          m_rp(static_cast<std::size_t>(system.Rows())), m_rm(static_cast<std::size_t>(system.Rows())) {
        for (VX_Variable* v : m_columns) m_x0.push_back(v ? v->fv() : 0.0);
    }
    ~Checker() { Restore(); }

    // Central difference of every residual for the columns perturbed together; false when a
    // block failed.
    bool Difference(const std::vector<int>& group) {
        Perturb(group, +1.0);
        bool ok = m_system.EvaluateResiduals(m_rp.data());
        Perturb(group, -1.0);
        ok = m_system.EvaluateResiduals(m_rm.data()) && ok;
        Restore(group);
        m_result.residualEvaluations += 2;
        return ok;
    }
    double Step(int c) const { return m_options.relativeStep * std::max(1.0, std::fabs(m_x0[static_cast<std::size_t>(c)])); }
    double Slope(int row, int c) const {
        return (m_rp[static_cast<std::size_t>(row)] - m_rm[static_cast<std::size_t>(row)]) / (2.0 * Step(c));
    }
    void Record(const JacobianEntryCheck& e) {
        if (e.error > m_options.tolerance) ++m_result.failures;
        m_worst.push(e);
        if (static_cast<int>(m_worst.size()) > m_options.worstListed) m_worst.pop();
    }
    JacobianCheckResult& Result() { return m_result; }
    JacobianCheckResult Finish() {
        while (!m_worst.empty()) {
            m_result.worst.push_back(m_worst.top());
            m_worst.pop();
        }
        std::reverse(m_result.worst.begin(), m_result.worst.end());
        return m_result;
    }

private:
    void Perturb(const std::vector<int>& group, double sign) {
        for (int c : group)
            if (VX_Variable* v = m_columns[static_cast<std::size_t>(c)]) v->SetSolverValue(m_x0[static_cast<std::size_t>(c)] + sign * Step(c));
    }
    void Restore(const std::vector<int>& group) {
        for (int c : group)
            if (VX_Variable* v = m_columns[static_cast<std::size_t>(c)]) v->SetSolverValue(m_x0[static_cast<std::size_t>(c)]);
    }
    void Restore() {
        for (std::size_t c = 0; c < m_columns.size(); ++c)
            if (m_columns[c]) m_columns[c]->SetSolverValue(m_x0[c]);
    }

    const EquationSystem& m_system;
    JacobianCheckOptions m_options;
    std::vector<VX_Variable*> m_columns;
    std::vector<double> m_x0, m_rp, m_rm;
    JacobianCheckResult m_result;
    std::priority_queue<JacobianEntryCheck, std::vector<JacobianEntryCheck>, WorseFirst> m_worst;
};

// Groups whose undeclared dependences are traced column by column (each costs two residual
// evaluations per column of the group).
constexpr int kTracedGroups = 3;

}  // namespace

JacobianCheckResult CheckJacobian(const EquationSystem& system, const JacobianCheckOptions& options) {
    zx::solve::TripletPattern all;
    all.n_rows = system.Rows();
    all.n_cols = static_cast<int>(system.Columns().size());
    all.rows = system.EntryRows();
    all.cols = system.EntryColumns();
    const zx::solve::CscPattern csc = zx::solve::CscPattern::from_triplets(all);

    Checker checker(system, options);
    JacobianCheckResult& result = checker.Result();
    result.entries = csc.nnz();
    result.columns = all.n_cols;
    std::vector<double> entries(static_cast<std::size_t>(system.Entries())), analytic(static_cast<std::size_t>(csc.nnz()));
    if (!system.EvaluateJacobian(entries.data())) {
        result.evaluationFailed = true;
        return checker.Finish();
    }
    csc.scatter(entries.data(), analytic.data());

    const auto groups = ColourColumns(csc);
    result.groups = static_cast<int>(groups.size());
    std::vector<int> touchedBy(static_cast<std::size_t>(all.n_rows), -1);
    int traced = 0;
    for (std::size_t g = 0; g < groups.size(); ++g) {
        const auto& group = groups[g];
        if (!checker.Difference(group)) {
            result.evaluationFailed = true;
            break;
        }
        double smallestStep = INFINITY;
        for (int c : group) {
            smallestStep = std::min(smallestStep, checker.Step(c));
            for (int s = csc.col_start[static_cast<std::size_t>(c)]; s < csc.col_start[static_cast<std::size_t>(c) + 1]; ++s) {
                const int row = csc.row_index[static_cast<std::size_t>(s)];
                touchedBy[static_cast<std::size_t>(row)] = static_cast<int>(g);
                const double a = analytic[static_cast<std::size_t>(s)], fd = checker.Slope(row, c);
                checker.Record(JacobianEntryCheck{row, c, a, fd, Error(a, fd), true});
            }
        }
        // Rows that moved although none of their declared variables did.
        std::vector<int> moved;
        for (int row = 0; row < all.n_rows; ++row) {
            if (touchedBy[static_cast<std::size_t>(row)] == static_cast<int>(g)) continue;
            const double slope = checker.Slope(row, group.front()) * checker.Step(group.front()) / smallestStep;
            if (std::fabs(slope) > options.tolerance) moved.push_back(row);
        }
        if (moved.empty() || traced >= kTracedGroups) {
            result.failures += static_cast<int>(moved.size());
            continue;
        }
        ++traced;
        for (int c : group) {
            if (!checker.Difference({c})) {
                result.evaluationFailed = true;
                break;
            }
            for (int row : moved) {
                const double fd = checker.Slope(row, c);
                if (fd != 0.0) checker.Record(JacobianEntryCheck{row, c, 0.0, fd, Error(0.0, fd), false});
            }
        }
    }
    return checker.Finish();
}

void WriteJacobianCheck(const EquationSystem& system, const JacobianCheckResult& r, const JacobianCheckOptions& options,
                        std::ostream& out) {
    out << "Jacobian check: " << r.entries << " entries in " << r.columns << " columns, " << r.groups
        << " column groups, " << r.residualEvaluations << " residual evaluations\n";
    if (r.evaluationFailed) out << "a block reported a failure while evaluating residuals or Jacobian\n";
    if (!r.worst.empty()) {
        out << "worst entries (error = |analytic - fd| / max(1, |analytic|, |fd|)):\n";
        for (const JacobianEntryCheck& e : r.worst) {
            char numbers[128];
            std::snprintf(numbers, sizeof numbers, "analytic %13.6e  fd %13.6e  error %9.2e", e.analytic,
                          e.finiteDifference, e.error);
            out << "  " << numbers << "  " << system.EquationName(e.row) << " / "
                << system.VariableName(*system.Columns()[static_cast<std::size_t>(e.column)])
                << (e.declared ? "" : "  (not declared by the block)") << "\n";
        }
    }
    if (r.failures == 0 && !r.evaluationFailed)
        out << "all entries agree within " << options.tolerance << "\n";
    else
        out << r.failures << " entries differ by more than " << options.tolerance << "\n";
}

}  // namespace zx::flowsheet
