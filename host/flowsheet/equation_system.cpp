#include "flowsheet/equation_system.hpp"

#include <algorithm>
#include <cstring>

#include "flowsheet/flowsheet.hpp"
#include "flowsheet/input_error.hpp"
#include "flowsheet/variable_walk.hpp"
#include "zorexp/zorexp.hpp"

namespace zx::flowsheet {
namespace {

[[noreturn]] void Fail(const Block& b, const std::string& what) {
    throw ModelFailure("block " + b.name + " (" + b.type + "): " + what);
}

}  // namespace

EquationSystem::EquationSystem(Flowsheet& flowsheet) : m_flowsheet(&flowsheet) {
    VX_Session& session = flowsheet.Session();
    const auto& blocks = flowsheet.Blocks();
    session.ResetNumbering();
    m_ranges.resize(blocks.size());

    // Equations: one numbering of groups over all blocks, in file order.
    long long rows = 0;
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        session.SetLastFailure({});
        const int n = blocks[b].model->SetUpEquations();
        if (n < 0)
            Fail(blocks[b], "SetUpEquations failed with status " + std::to_string(n) + " (" + VX_StatusMessage(n) + ")" +
                                (session.LastFailure().empty() ? "" : ": " + session.LastFailure()));
        m_ranges[b].firstRow = static_cast<int>(rows);
        m_ranges[b].rows = n;
        rows += n;
    }
    // Jacobian entries: sized from the counts, then filled by JacPattern in the same order.
    long long entries = 0;
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        int eq = 0, nz = 0;
        blocks[b].model->CountEqnsAndNZs(eq, nz);
        if (eq != m_ranges[b].rows)
            Fail(blocks[b], "SetUpEquations returned " + std::to_string(m_ranges[b].rows) + " equations but counted " + std::to_string(eq));
        m_ranges[b].firstEntry = static_cast<int>(entries);
        m_ranges[b].entries = nz;
        entries += nz;
    }
    if (rows > INT32_MAX || entries > INT32_MAX) throw ModelFailure("the flowsheet has more equations or Jacobian entries than one system can hold");
    m_rows = static_cast<int>(rows);
    m_entryRows.assign(static_cast<std::size_t>(entries), -1);
    m_entryColumns.assign(static_cast<std::size_t>(entries), -1);
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const BlockRange& range = m_ranges[b];
        int* r = m_entryRows.data() + range.firstEntry;
        int* c = m_entryColumns.data() + range.firstEntry;
        const int rowsBefore = session.RowCount();
        const int status = blocks[b].model->JacPattern(r, c, nullptr);
        if (status < 0) Fail(blocks[b], "JacPattern failed with status " + std::to_string(status));
        if (r - (m_entryRows.data() + range.firstEntry) != range.entries)
            Fail(blocks[b], "JacPattern wrote " + std::to_string(r - (m_entryRows.data() + range.firstEntry)) +
                                " entries, SetUpEquations declared " + std::to_string(range.entries));
        if (session.RowCount() - rowsBefore != range.rows || rowsBefore != range.firstRow)
            Fail(blocks[b], "JacPattern declared " + std::to_string(session.RowCount() - rowsBefore) +
                                " equations, SetUpEquations " + std::to_string(range.rows));
    }

    // Unknowns: the free columns.
    m_columns = session.Columns();
    m_unknownOfColumn.assign(m_columns.size(), -1);
    for (std::size_t c = 0; c < m_columns.size(); ++c) {
        VX_Variable* v = m_columns[c];
        if (v && v->CurrSpec() == VX_SPEC_FREE) {
            m_unknownOfColumn[c] = static_cast<int>(m_unknowns.size());
            m_unknowns.push_back(v);
        }
    }
    // The solver's pattern: the entries of unknown columns. Each entry is also checked to lie
    // in its block's rows and to name a numbered column.
    m_pattern.n_rows = m_rows;
    m_pattern.n_cols = static_cast<int>(m_unknowns.size());
    std::size_t kept = 0;
    for (int c : m_entryColumns) kept += (c >= 0 && c < static_cast<int>(m_columns.size()) && m_unknownOfColumn[static_cast<std::size_t>(c)] >= 0);
    m_pattern.rows.reserve(kept);
    m_pattern.cols.reserve(kept);
    m_kept.reserve(kept);
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const BlockRange& range = m_ranges[b];
        for (int k = range.firstEntry; k < range.firstEntry + range.entries; ++k) {
            const int row = m_entryRows[static_cast<std::size_t>(k)], c = m_entryColumns[static_cast<std::size_t>(k)];
            if (row < range.firstRow || row >= range.firstRow + range.rows)
                Fail(blocks[b], "JacPattern wrote an entry in row " + std::to_string(row) + ", outside its rows");
            if (c < 0 || c >= static_cast<int>(m_columns.size()))
                Fail(blocks[b], "JacPattern wrote an entry in column " + std::to_string(c) + ", which no variable holds");
            const int u = m_unknownOfColumn[static_cast<std::size_t>(c)];
            if (u < 0) continue;
            m_pattern.rows.push_back(row);
            m_pattern.cols.push_back(u);
            m_kept.push_back(k);
        }
    }
    m_csc = zx::solve::CscPattern::from_triplets(m_pattern);
    for (const Block& b : blocks)
        ForEachVariable(*b.model, [&](VX_Variable& v) {
            if (v.CurrSpec() == VX_SPEC_FREE && v.Column() < 0) m_freeUnused.push_back(&v);
        });
}

int EquationSystem::BlockOfRow(int row) const {
    auto it = std::upper_bound(m_ranges.begin(), m_ranges.end(), row,
                               [](int r, const BlockRange& b) { return r < b.firstRow + b.rows; });
    return it == m_ranges.end() ? -1 : static_cast<int>(it - m_ranges.begin());
}

namespace {

// "R1 VX_Eqn3 #2 (row 7)": the block, the label, which of the block's equations with that
// label it is (from 1), and the row of the whole system.
std::string NameEquation(const Block& block, const BlockRange& range, int row) {
    const auto& runs = block.model->RowLabels();   // (label, count), run-length coded
    const int local = row - range.firstRow;
    int start = 0;
    std::size_t run = 0;
    for (; run < runs.size() && local >= start + runs[run].second; ++run) start += runs[run].second;
    const std::string where = " (row " + std::to_string(row) + ")";
    if (run == runs.size() || !runs[run].first) return block.name + " equation " + std::to_string(local + 1) + where;
    const char* label = runs[run].first;
    int occurrence = local - start;
    for (std::size_t j = 0; j < run; ++j)
        if (runs[j].first && std::strcmp(runs[j].first, label) == 0) occurrence += runs[j].second;
    return block.name + " " + label + " #" + std::to_string(occurrence + 1) + where;
}

}  // namespace

std::string EquationSystem::EquationName(int row) const {
    const int b = BlockOfRow(row);
    if (b < 0) return "row " + std::to_string(row);
    return NameEquation(m_flowsheet->Blocks()[static_cast<std::size_t>(b)], m_ranges[static_cast<std::size_t>(b)], row);
}

std::string EquationSystem::VariableName(const VX_Variable& v) const { return m_flowsheet->NameOf(v); }

bool EquationSystem::EvaluateResiduals(double* r) const {
    const auto& blocks = m_flowsheet->Blocks();
    bool ok = true;
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const BlockRange& range = m_ranges[b];
        ok = (blocks[b].model->Residuals(r, 0, range.firstRow) == range.firstRow + range.rows) && ok;
    }
    return ok;
}

bool EquationSystem::EvaluateJacobian(double* values) const {
    const auto& blocks = m_flowsheet->Blocks();
    bool ok = true;
    for (std::size_t b = 0; b < blocks.size(); ++b) {
        const BlockRange& range = m_ranges[b];
        ok = (blocks[b].model->Jacobian(values, 0, range.firstEntry) == range.firstEntry + range.entries) && ok;
    }
    return ok;
}

}  // namespace zx::flowsheet
