#include "flowsheet/equation_system.hpp"

#include <algorithm>
#include <cstring>

#include "flowsheet/flowsheet.hpp"
#include "flowsheet/input_error.hpp"
#include "flowsheet/variable_walk.hpp"
#include "zorexp/zorexp.hpp"

namespace zx::flowsheet {

EquationSystem::EquationSystem(Flowsheet& flowsheet) : m_flowsheet(&flowsheet) {
    VX_ProtocolDriver& driver = flowsheet.Driver();
    if (driver.SetUpEquations() < 0) throw ModelFailure(FailureText());
    m_rows = driver.Rows();
    m_entries = driver.Entries();
    RecordEntries();

    // Unknowns: the free variables among the columns.
    m_columns = &flowsheet.Session().Columns();
    const std::vector<VX_VarParam*>& columns = *m_columns;
    m_unknownOfColumn.assign(columns.size(), -1);
    for (std::size_t c = 0; c < columns.size(); ++c) {
        auto* v = dynamic_cast<VX_Variable*>(columns[c]);
        if (v && v->CurrSpec() == VX_SPEC_FREE) {
            m_unknownOfColumn[c] = static_cast<int>(m_unknowns.size());
            m_unknowns.push_back(v);
        }
    }
    // The solver's pattern: the entries of unknown columns.
    m_pattern.n_rows = m_rows;
    m_pattern.n_cols = static_cast<int>(m_unknowns.size());
    std::size_t kept = 0;
    for (int c : m_entryColumns) kept += m_unknownOfColumn[static_cast<std::size_t>(c)] >= 0;
    m_pattern.rows.reserve(kept);
    m_pattern.cols.reserve(kept);
    m_kept.reserve(kept);
    for (std::size_t k = 0; k < m_entryColumns.size(); ++k) {
        const int u = m_unknownOfColumn[static_cast<std::size_t>(m_entryColumns[k])];
        if (u < 0) continue;
        m_pattern.rows.push_back(m_entryRows[k]);
        m_pattern.cols.push_back(u);
        m_kept.push_back(static_cast<int>(k));
    }
    m_csc = zx::solve::CscPattern::from_triplets(m_pattern);
    std::vector<int>().swap(m_entryRows);
    std::vector<int>().swap(m_entryColumns);
    for (const Block& b : flowsheet.Blocks())
        ForEachVariable(*b.model, [&](VX_Variable& v) {
            if (v.CurrSpec() == VX_SPEC_FREE && v.Column() < 0) m_freeUnused.push_back(&v);
        });
}

void EquationSystem::RecordEntries() const {
    if (static_cast<int>(m_entryRows.size()) == m_entries) return;
    std::vector<int> rows(static_cast<std::size_t>(m_entries), -1), cols(rows.size(), -1);
    if (m_flowsheet->Driver().JacPattern(rows.data(), cols.data()) < 0) throw ModelFailure(FailureText());
    m_entryRows = std::move(rows);
    m_entryColumns = std::move(cols);
}

void EquationSystem::GatherUnknownCsc(const double* all, double* csc) const {
    std::fill_n(csc, m_csc.nnz(), 0.0);
    const int* kept = m_kept.data();
    const int* slot = m_csc.slot_of_triplet.data();
    const std::size_t n = m_kept.size();
    for (std::size_t t = 0; t < n; ++t) csc[slot[t]] += all[kept[t]];
}

int EquationSystem::BlockOfRow(int row) const {
    const VX_ProtocolDriver& driver = m_flowsheet->Driver();
    const int unit = driver.UnitOfRow(row);
    return unit < 0 ? -1 : driver.Units()[static_cast<std::size_t>(unit)].block;
}

std::string EquationSystem::EquationName(int row) const {
    const VX_ProtocolDriver& driver = m_flowsheet->Driver();
    const int unit = driver.UnitOfRow(row);
    const std::string where = " (row " + std::to_string(row) + ")";
    if (unit < 0) return "row " + std::to_string(row);
    const VX_ProtocolDriver::Unit& u = driver.Units()[static_cast<std::size_t>(unit)];
    if (auto* c = dynamic_cast<const VX_Connection*>(u.object)) {
        const char* label = driver.RowLabel(row);
        return "connection " + m_flowsheet->NameOf(c->From()) + " -> " + m_flowsheet->NameOf(c->To()) + ": " +
               (label ? label : "") + where;
    }
    // "R1 VX_Eqn3 #2": which of the unit's equations with that label it is (from 1).
    const auto& runs = u.object->RowLabels();   // (label, count), run-length coded
    const int local = row - u.firstRow;
    const std::string owner = m_flowsheet->NameOf(*u.object);
    int start = 0;
    std::size_t run = 0;
    for (; run < runs.size() && local >= start + runs[run].second; ++run) start += runs[run].second;
    if (run == runs.size() || !runs[run].first) return owner + " equation " + std::to_string(local + 1) + where;
    const char* label = runs[run].first;
    int occurrence = local - start;
    for (std::size_t j = 0; j < run; ++j)
        if (runs[j].first && std::strcmp(runs[j].first, label) == 0) occurrence += runs[j].second;
    return owner + " " + label + " #" + std::to_string(occurrence + 1) + where;
}

std::string EquationSystem::VariableName(const VX_Type& v) const { return m_flowsheet->NameOf(v); }

bool EquationSystem::EvaluateResiduals(double* r) const { return m_flowsheet->Driver().Residuals(r) >= 0; }

bool EquationSystem::EvaluateJacobian(double* values) const { return m_flowsheet->Driver().Jacobian(values) >= 0; }

std::string EquationSystem::FailureText() const {
    const VX_ProtocolDriver& driver = m_flowsheet->Driver();
    const VX_ProtocolDriver::Failure& f = driver.LastFailure();
    std::string who = "the flowsheet";
    if (f.unit >= 0) {
        const VX_ProtocolDriver::Unit& u = driver.Units()[static_cast<std::size_t>(f.unit)];
        who = m_flowsheet->Describe(*u.object);
    }
    return who + ": " + f.operation + " failed: " + f.message;
}

}  // namespace zx::flowsheet
