#pragma once
// The equations of a set-up flowsheet as one system. Each block declares its equations in file
// order under one numbering of groups, rows and columns, so block b's equations are the rows
// [FirstRow, FirstRow + Rows) and its Jacobian entries the slots [FirstEntry, FirstEntry +
// Entries) of one residual array and one Jacobian array.
//
// Columns are all variables that appear in some equation. The unknowns are the free ones;
// entries of fixed columns are computed by the blocks but not passed to the solver.
#include <string>
#include <vector>

#include "solver/sparse_pattern.hpp"

class VX_Variable;

namespace zx::flowsheet {

class Flowsheet;

struct BlockRange {
    int firstRow = 0, rows = 0;
    int firstEntry = 0, entries = 0;
};

class EquationSystem {
public:
    // Runs SetUpEquations, CountEqnsAndNZs and JacPattern on every block; throws ModelFailure
    // when a block's answers disagree with each other.
    explicit EquationSystem(Flowsheet& flowsheet);

    Flowsheet& Sheet() const { return *m_flowsheet; }
    int Rows() const { return m_rows; }
    int Entries() const { return static_cast<int>(m_entryRows.size()); }
    const std::vector<BlockRange>& Ranges() const { return m_ranges; }

    // Every Jacobian entry in block order: its row and its column.
    const std::vector<int>& EntryRows() const { return m_entryRows; }
    const std::vector<int>& EntryColumns() const { return m_entryColumns; }
    const std::vector<VX_Variable*>& Columns() const { return m_columns; }

    // The unknowns (free columns) and, per column, its unknown or -1 when the column is fixed.
    const std::vector<VX_Variable*>& Unknowns() const { return m_unknowns; }
    const std::vector<int>& UnknownOfColumn() const { return m_unknownOfColumn; }
    // The solver's pattern over the unknowns, and for each of its entries the entry of the
    // whole system it comes from.
    const zx::solve::TripletPattern& UnknownPattern() const { return m_pattern; }
    // The same pattern compressed once, shared by the analysis and the solver.
    const zx::solve::CscPattern& UnknownCsc() const { return m_csc; }
    const std::vector<int>& KeptEntries() const { return m_kept; }
    // Free variables that appear in no equation: not unknowns, listed for the user.
    const std::vector<VX_Variable*>& FreeUnused() const { return m_freeUnused; }

    // The block that holds a row, and names for users: "R1 VX_Eqn1 (row 4)", "R1.T_CELL(3)".
    int BlockOfRow(int row) const;
    std::string EquationName(int row) const;
    std::string VariableName(const VX_Variable& v) const;

    // Evaluation over the whole system (x already placed in the variables). False when a
    // block reports a failure.
    bool EvaluateResiduals(double* r) const;
    bool EvaluateJacobian(double* values) const;

private:
    Flowsheet* m_flowsheet;
    int m_rows = 0;
    std::vector<BlockRange> m_ranges;
    std::vector<int> m_entryRows, m_entryColumns;
    std::vector<VX_Variable*> m_columns;
    std::vector<VX_Variable*> m_unknowns;
    std::vector<int> m_unknownOfColumn;
    zx::solve::TripletPattern m_pattern;
    zx::solve::CscPattern m_csc;
    std::vector<int> m_kept;
    std::vector<VX_Variable*> m_freeUnused;
};

}  // namespace zx::flowsheet
