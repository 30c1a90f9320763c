#include "flowsheet/flowsheet_system.hpp"

#include "zorexp/variable.hpp"

namespace zx::flowsheet {

FlowsheetSystem::FlowsheetSystem(const EquationSystem& equations)
    : m_equations(&equations), m_allEntries(static_cast<std::size_t>(equations.Entries())) {}

void FlowsheetSystem::Place(const double* x) {
    VX_Variable* const* u = m_equations->Unknowns().data();
    const std::size_t n = m_equations->Unknowns().size();
    for (std::size_t j = 0; j < n; ++j) u[j]->SetSolverValue(x[j]);
}

bool FlowsheetSystem::residuals(const double* x, double* r) {
    Place(x);
    return m_equations->EvaluateResiduals(r);
}

bool FlowsheetSystem::jacobian(const double* x, double* values) {
    Place(x);
    if (!m_equations->EvaluateJacobian(m_allEntries.data())) return false;
    const std::vector<int>& kept = m_equations->KeptEntries();
    const double* all = m_allEntries.data();
    const int* k = kept.data();
    const std::size_t n = kept.size();
    for (std::size_t t = 0; t < n; ++t) values[t] = all[k[t]];
    return true;
}

bool FlowsheetSystem::jacobian_compressed(const double* x, double* csc_values) {
    Place(x);
    if (!m_equations->EvaluateJacobian(m_allEntries.data())) return false;
    m_equations->GatherUnknownCsc(m_allEntries.data(), csc_values);
    return true;
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
