#include "checks/model_jacobian_check.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zorexp/model_type.hpp"
#include "zorexp/session.hpp"
#include "zorexp/variable.hpp"

namespace zx::checks {
namespace {

constexpr int kGuard = 8;   // cells past a block that must stay untouched

// A buffer of n cells and the guard, all NaN; Touched tells whether the guard was written.
std::vector<double> Guarded(int n) { return std::vector<double>(n + kGuard, std::numeric_limits<double>::quiet_NaN()); }
bool Touched(const std::vector<double>& v, int n) {
    return std::any_of(v.begin() + n, v.end(), [](double x) { return !std::isnan(x); });
}

// One model as a system of its own rows and the session's columns.
class ModelSystem final : public CheckedSystem {
public:
    ModelSystem(VX_ModelType& model, std::span<const int> rows, std::span<const int> cols, int firstRow)
        : m_model(model), m_columns(VX_Session::Current().Columns()), m_first(firstRow), m_cols(cols) {
        int declared = 0;
        model.CountEqnsAndNZs(m_rows, declared);
        for (int row : rows) m_entryRows.push_back(row - firstRow);
        m_residuals.resize(firstRow + m_rows);
        m_values.resize(std::max<std::size_t>(declared, rows.size()));
    }
    int Rows() const override { return m_rows; }
    int Columns() const override { return static_cast<int>(m_columns.size()); }
    std::span<const int> EntryRows() const override { return m_entryRows; }
    std::span<const int> EntryColumns() const override { return m_cols; }
    bool Residuals(double* r) override {
        const bool ok = m_model.Residuals(m_residuals.data(), 0, m_first) == m_first + m_rows;
        std::copy(m_residuals.begin() + m_first, m_residuals.end(), r);
        return ok;
    }
    bool Jacobian(double* values) override {
        const bool ok = m_model.Jacobian(m_values.data(), 0, 0) == static_cast<int>(m_entryRows.size());
        std::copy_n(m_values.begin(), m_entryRows.size(), values);
        return ok;
    }
    double Value(int c) const override { return m_columns[c] ? m_columns[c]->fv() : 0.0; }
    void SetValue(int c, double x) override {
        if (m_columns[c]) m_columns[c]->SetSolverValue(x);
    }
    std::string RowName(int row) const override {
        const char* label = m_model.RowLabel(row);
        return label ? label : "";
    }
    std::string ColumnName(int c) const override { return m_columns[c] ? m_columns[c]->Path() : ""; }

private:
    VX_ModelType& m_model;
    const std::vector<VX_Variable*>& m_columns;
    int m_first, m_rows = 0;
    std::span<const int> m_cols;
    std::vector<int> m_entryRows;
    std::vector<double> m_residuals, m_values;
};

}  // namespace

std::vector<std::string> CheckModelStructure(VX_ModelType& model, std::span<const int> rows, std::span<const int> cols,
                                             int firstRow) {
    using std::to_string;
    std::vector<std::string> problems;
    int equations = 0, declared = 0;
    model.CountEqnsAndNZs(equations, declared);
    const int entries = static_cast<int>(rows.size()), end = firstRow + equations;
    if (rows.size() != cols.size())
        return {"the pattern has " + to_string(rows.size()) + " rows but " + to_string(cols.size()) + " columns"};
    if (declared != entries)
        problems.push_back("SetUpEquations declared " + to_string(declared) + " nonzeros, JacPattern gave " + to_string(entries));
    const auto& columns = VX_Session::Current().Columns();
    for (int k = 0; k < entries; ++k) {
        if (rows[k] < firstRow || rows[k] >= end) {
            problems.push_back("pattern entry " + to_string(k) + " has row " + to_string(rows[k]) + " outside rows " +
                               to_string(firstRow) + ".." + to_string(end - 1));
            break;
        }
        if (cols[k] < 0 || cols[k] >= static_cast<int>(columns.size()) || !columns[cols[k]]) {
            problems.push_back("pattern entry " + to_string(k) + " has column " + to_string(cols[k]) +
                               ", which names no variable of the session");
            break;
        }
    }
    std::vector<double> values = Guarded(std::max(entries, declared));
    if (const int written = model.Jacobian(values.data(), 0, 0); written != entries)
        problems.push_back("Jacobian returned " + to_string(written) + ", expected " + to_string(entries) + " entries");
    if (Touched(values, entries)) problems.push_back("Jacobian wrote past its " + to_string(entries) + " entries");
    std::vector<double> r = Guarded(end);
    if (const int written = model.Residuals(r.data(), 0, firstRow); written != end)
        problems.push_back("Residuals returned " + to_string(written) + ", expected " + to_string(end));
    if (Touched(r, end)) problems.push_back("Residuals wrote past its " + to_string(equations) + " rows");
    return problems;
}

JacobianCheckResult CheckModelJacobian(VX_ModelType& model, std::span<const int> rows, std::span<const int> cols,
                                       const JacobianCheckOptions& options, int firstRow) {
    ModelSystem system(model, rows, cols, firstRow);
    return CheckJacobian(system, options);
}

}  // namespace zx::checks
