// Check of an equation system's analytic Jacobian against central finite differences of its
// residuals, at the variables' current values. Columns that share no equation are perturbed
// together (a greedy colouring of the pattern), so a banded system of a million cells needs a
// handful of residual evaluations, not two per column. A residual that moves when no column it
// declares was perturbed reveals an undeclared dependence; the columns of that group are then
// perturbed one by one to name the missing entry.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace zx::checks {

// What the check needs of a system: rows 0..Rows()-1, columns 0..Columns()-1, and the
// Jacobian entries (row, column) in the order Jacobian() writes their values; repeated
// pairs add up.
class CheckedSystem {
public:
    virtual ~CheckedSystem() = default;
    virtual int Rows() const = 0;
    virtual int Columns() const = 0;
    virtual std::span<const int> EntryRows() const = 0;
    virtual std::span<const int> EntryColumns() const = 0;
    // False when the system reports a failure.
    virtual bool Residuals(double* r) = 0;
    virtual bool Jacobian(double* values) = 0;
    virtual double Value(int column) const = 0;
    virtual void SetValue(int column, double x) = 0;
    virtual std::string RowName(int row) const = 0;
    virtual std::string ColumnName(int column) const = 0;
};

struct JacobianCheckOptions {
    double relativeStep = 6e-6;   // h_j = relativeStep * max(1, |x_j|)
    double tolerance = 1e-5;      // see ScaledError in jacobian_check.cpp
    int worstListed = 10;
};

struct JacobianEntryCheck {
    int row = 0;
    int column = 0;
    std::string rowName, columnName;
    double analytic = 0.0;        // 0 for an entry the system does not declare
    double finiteDifference = 0.0;
    double scaledError = 0.0;     // above 1 fails
    bool declared = true;
};

struct JacobianCheckResult {
    int entries = 0;              // distinct (row, column) entries compared
    int columns = 0;
    int groups = 0;
    int residualEvaluations = 0;
    int failures = 0;             // entries (declared or not) beyond the tolerance
    bool evaluationFailed = false;
    std::vector<JacobianEntryCheck> worst;   // largest scaled error first
    bool ok() const { return failures == 0 && !evaluationFailed; }
};

// Every column is put back to its value afterwards, also when the system throws. Throws
// std::invalid_argument when an entry lies outside the rows or columns.
JacobianCheckResult CheckJacobian(CheckedSystem& system, const JacobianCheckOptions& options = {});

}  // namespace zx::checks
