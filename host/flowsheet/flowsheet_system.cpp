#include "flowsheet/flowsheet_system.hpp"

#include <algorithm>
#include <limits>

#include "zorexp/variable.hpp"

namespace zx::flowsheet {

FlowsheetSystem::FlowsheetSystem(const EquationSystem& equations)
    : m_equations(&equations), m_allEntries(static_cast<std::size_t>(equations.Entries())) {}

void FlowsheetSystem::Place(const double* x) {
    VX_Variable* const* u = m_equations->Unknowns().data();
    const std::size_t n = m_equations->Unknowns().size();
    for (std::size_t j = 0; j < n; ++j) u[j]->SetSolverValue(x[j]);
}

void FlowsheetSystem::residuals(const double* x, double* r) {
    Place(x);
    if (!m_equations->EvaluateResiduals(r))
        std::fill(r, r + m_equations->Rows(), std::numeric_limits<double>::quiet_NaN());
}

void FlowsheetSystem::jacobian(const double* x, double* values) {
    Place(x);
    const std::vector<int>& kept = m_equations->KeptEntries();
    if (!m_equations->EvaluateJacobian(m_allEntries.data())) {
        std::fill(values, values + kept.size(), std::numeric_limits<double>::quiet_NaN());
        return;
    }
    const double* all = m_allEntries.data();
    const int* k = kept.data();
    const std::size_t n = kept.size();
    for (std::size_t t = 0; t < n; ++t) values[t] = all[k[t]];
}

std::vector<double> FlowsheetSystem::Values() const {
    std::vector<double> x;
    x.reserve(m_equations->Unknowns().size());
    for (const VX_Variable* v : m_equations->Unknowns()) x.push_back(v->fv());
    return x;
}

std::vector<double> FlowsheetSystem::Lower() const {
    std::vector<double> b;
    b.reserve(m_equations->Unknowns().size());
    for (const VX_Variable* v : m_equations->Unknowns()) b.push_back(v->Lower());
    return b;
}

std::vector<double> FlowsheetSystem::Upper() const {
    std::vector<double> b;
    b.reserve(m_equations->Unknowns().size());
    for (const VX_Variable* v : m_equations->Unknowns()) b.push_back(v->Upper());
    return b;
}

}  // namespace zx::flowsheet
