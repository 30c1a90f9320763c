#include "flowsheet/flowsheet_jacobian_check.hpp"

#include <cstdio>
#include <ostream>

#include "flowsheet/equation_system.hpp"
#include "zorexp/varparam.hpp"

namespace zx::flowsheet {
namespace {

class SystemView final : public zx::checks::CheckedSystem {
public:
    explicit SystemView(const EquationSystem& system) : m_system(system) {}
    int Rows() const override { return m_system.Rows(); }
    int Columns() const override { return static_cast<int>(m_system.Columns().size()); }
    std::span<const int> EntryRows() const override { return m_system.EntryRows(); }
    std::span<const int> EntryColumns() const override { return m_system.EntryColumns(); }
    bool Residuals(double* r) override { return m_system.EvaluateResiduals(r); }
    bool Jacobian(double* values) override { return m_system.EvaluateJacobian(values); }
    double Value(int c) const override { return Slot(c) ? *Slot(c) : 0.0; }
    void SetValue(int c, double x) override {
        if (Slot(c)) *Slot(c) = x;
    }
    std::string RowName(int row) const override { return m_system.EquationName(row); }
    std::string ColumnName(int c) const override { return Var(c) ? m_system.VariableName(*Var(c)) : ""; }

private:
    VX_VarParam* Var(int c) const { return m_system.Columns()[c]; }
    double* Slot(int c) const { return Var(c) ? Var(c)->RealSlot() : nullptr; }
    const EquationSystem& m_system;
};

}  // namespace

JacobianCheckResult CheckJacobian(const EquationSystem& system, const JacobianCheckOptions& options) {
    SystemView view(system);
    return zx::checks::CheckJacobian(view, options);
}

void WriteJacobianCheck(const EquationSystem&, const JacobianCheckResult& r, const JacobianCheckOptions& options,
                        std::ostream& out) {
    out << "Jacobian check: " << r.entries << " entries in " << r.columns << " columns, " << r.groups
        << " column groups, " << r.residualEvaluations << " residual evaluations\n";
    if (r.evaluationFailed) out << "a block reported a failure while evaluating residuals or Jacobian\n";
    if (!r.worst.empty()) {
        out << "worst entries (error: |analytic - fd| in units of the allowed difference, above 1 fails):\n";
        for (const JacobianEntryCheck& e : r.worst) {
            char numbers[128];
            std::snprintf(numbers, sizeof numbers, "analytic %13.6e  fd %13.6e  error %9.2e", e.analytic,
                          e.finiteDifference, e.scaledError);
            out << "  " << numbers << "  " << e.rowName << " / " << e.columnName
                << (e.declared ? "" : "  (not declared by the block)") << "\n";
        }
    }
    if (r.ok())
        out << "all entries agree within " << options.tolerance << "\n";
    else
        out << r.failures << " entries differ by more than " << options.tolerance << "\n";
}

}  // namespace zx::flowsheet
