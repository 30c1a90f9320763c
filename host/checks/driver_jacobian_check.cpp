#include "checks/driver_jacobian_check.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zorexp/zorexp.hpp"

namespace zx::checks {
namespace {

constexpr int kGuard = 8;   // cells past the arrays that must stay untouched

// A buffer of n cells and the guard, all NaN; Touched tells whether the guard was written.
std::vector<double> Guarded(int n) { return std::vector<double>(static_cast<std::size_t>(n + kGuard), std::numeric_limits<double>::quiet_NaN()); }
bool Touched(const std::vector<double>& v, int n) {
    return std::any_of(v.begin() + n, v.end(), [](double x) { return !std::isnan(x); });
}

class DriverSystem final : public CheckedSystem {
public:
    explicit DriverSystem(VX_ProtocolDriver& driver)
        : m_driver(driver), m_columns(VX_Session::Current().Columns()),
          m_rows(static_cast<std::size_t>(driver.Entries())), m_cols(static_cast<std::size_t>(driver.Entries())) {
        driver.JacPattern(m_rows.data(), m_cols.data());
    }
    int Rows() const override { return m_driver.Rows(); }
    int Columns() const override { return static_cast<int>(m_columns.size()); }
    std::span<const int> EntryRows() const override { return m_rows; }
    std::span<const int> EntryColumns() const override { return m_cols; }
    bool Residuals(double* r) override { return m_driver.Residuals(r) >= 0; }
    bool Jacobian(double* values) override { return m_driver.Jacobian(values) >= 0; }
    double Value(int c) const override { return Slot(c) ? *Slot(c) : 0.0; }
    void SetValue(int c, double x) override {
        if (double* s = Slot(c)) *s = x;
    }
    std::string RowName(int row) const override {
        const char* label = m_driver.RowLabel(row);
        return label ? label : "";
    }
    std::string ColumnName(int c) const override { return m_columns[static_cast<std::size_t>(c)] ? m_columns[static_cast<std::size_t>(c)]->Path() : ""; }

private:
    double* Slot(int c) const { return m_columns[static_cast<std::size_t>(c)] ? m_columns[static_cast<std::size_t>(c)]->RealSlot() : nullptr; }
    VX_ProtocolDriver& m_driver;
    const std::vector<VX_VarParam*>& m_columns;
    std::vector<int> m_rows, m_cols;
};

}  // namespace

std::vector<std::string> CheckDriverStructure(VX_ProtocolDriver& driver) {
    using std::to_string;
    std::vector<std::string> problems;
    const int rows = driver.Rows(), entries = driver.Entries();
    std::vector<int> r(static_cast<std::size_t>(entries)), c(static_cast<std::size_t>(entries));
    if (driver.JacPattern(r.data(), c.data()) < 0) return {driver.LastFailure().operation + ": " + driver.LastFailure().message};
    std::vector<double> values = Guarded(entries);
    if (driver.Jacobian(values.data()) < 0) problems.push_back(driver.LastFailure().operation + ": " + driver.LastFailure().message);
    if (Touched(values, entries)) problems.push_back("Jacobian wrote past its " + to_string(entries) + " entries");
    std::vector<double> res = Guarded(rows);
    if (driver.Residuals(res.data()) < 0) problems.push_back(driver.LastFailure().operation + ": " + driver.LastFailure().message);
    if (Touched(res, rows)) problems.push_back("Residuals wrote past its " + to_string(rows) + " rows");
    return problems;
}

JacobianCheckResult CheckDriverJacobian(VX_ProtocolDriver& driver, const JacobianCheckOptions& options) {
    DriverSystem system(driver);
    return CheckJacobian(system, options);
}

}  // namespace zx::checks
