#pragma once
// The flowsheet's equations as the Newton solver sees them: x holds the unknowns; residuals and
// Jacobian come from every block's Residuals and Jacobian. Evaluations allocate nothing and
// look nothing up: the unknowns' variables and the entries kept for the solver are fixed when
// the adapter is made.
#include <vector>

#include "flowsheet/equation_system.hpp"
#include "solver/newton_solver.hpp"

namespace zx::flowsheet {

class FlowsheetSystem : public zx::solve::SparseSystem {
public:
    explicit FlowsheetSystem(const EquationSystem& equations);

    const zx::solve::TripletPattern& pattern() const override { return m_equations->UnknownPattern(); }
    const zx::solve::CscPattern* compressed_pattern() const override { return &m_equations->UnknownCsc(); }
    // False when a unit reports a failure; failure() names the unit, the operation and why.
    bool residuals(const double* x, double* r) override;
    bool jacobian(const double* x, double* values) override;
    bool writes_compressed() const override { return true; }
    bool jacobian_compressed(const double* x, double* csc_values) override;
    std::string failure() const override { return m_equations->FailureText(); }

    // The unknowns' current values and bounds.
    std::vector<double> Values() const;
    std::vector<double> Lower() const;
    std::vector<double> Upper() const;
    // Puts x into the unknowns' variables.
    void Place(const double* x);

private:
    const EquationSystem* m_equations;
    std::vector<double> m_allEntries;   // every entry of the system, fixed columns included,
                                        // in the order the models write them
};

}  // namespace zx::flowsheet
