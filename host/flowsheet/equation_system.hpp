#pragma once
// The equations of a set-up flowsheet as one system, laid out by the runtime's protocol driver:
// every unit (a block, the ports, sub-models and structures it contains, a connection) has its
// rows and its Jacobian entries in one contiguous block of the system's arrays.
//
// Columns are all real variables and real parameters that appear in some equation (parameters
// are entries too: their derivatives are sensitivities). The unknowns are the free variables;
// entries of fixed variables and of parameters are computed by the models but not passed to
// the solver.
#include <string>
#include <vector>

#include "solver/sparse_pattern.hpp"

class VX_Type;
class VX_VarParam;
class VX_Variable;

namespace zx::flowsheet {

class Flowsheet;

class EquationSystem {
public:
    // Runs SetUpEquations and JacPattern on every unit; throws ModelFailure when a unit fails or
    // its answers disagree with each other.
    explicit EquationSystem(Flowsheet& flowsheet);

    Flowsheet& Sheet() const { return *m_flowsheet; }
    int Rows() const { return m_rows; }
    int Entries() const { return m_entries; }

    // Every Jacobian entry in unit order: its row and its column. Two numbers per entry of the
    // whole system, fixed columns included, are not kept through the solve: they are recorded
    // again from the models the first time a diagnosis or a check asks for them.
    const std::vector<int>& EntryRows() const { RecordEntries(); return m_entryRows; }
    const std::vector<int>& EntryColumns() const { RecordEntries(); return m_entryColumns; }
    // The flowsheet session's own numbering, not a copy: it stays as it is while the system lives.
    const std::vector<VX_VarParam*>& Columns() const { return *m_columns; }

    // The unknowns (free variables) and, per column, its unknown or -1.
    const std::vector<VX_Variable*>& Unknowns() const { return m_unknowns; }
    const std::vector<int>& UnknownOfColumn() const { return m_unknownOfColumn; }
    // The solver's pattern over the unknowns, and for each of its entries the entry of the
    // whole system it comes from.
    const zx::solve::TripletPattern& UnknownPattern() const { return m_pattern; }
    // The same pattern compressed once, shared by the analysis and the solver.
    const zx::solve::CscPattern& UnknownCsc() const { return m_csc; }
    const std::vector<int>& KeptEntries() const { return m_kept; }
    // The solver's Jacobian values from a whole-system evaluation (all, Entries() values):
    // each kept entry added into its slot of UnknownCsc() (csc, nnz() values, set here).
    void GatherUnknownCsc(const double* all, double* csc) const;
    // Free variables that appear in no equation: not unknowns, listed for the user.
    const std::vector<VX_Variable*>& FreeUnused() const { return m_freeUnused; }

    // The block that holds a row (-1 for a connection's), and names for users:
    // "R1 VX_Eqn1 #3 (row 4)", "connection H1.OUT_HS -> H2.IN_HS: Q (row 9)", "R1.T_CELL(3)".
    int BlockOfRow(int row) const;
    std::string EquationName(int row) const;
    std::string VariableName(const VX_Type& v) const;

    // Evaluation over the whole system (x already placed in the variables). False when a unit
    // reports a failure; FailureText() then says which, where and why, in one line.
    bool EvaluateResiduals(double* r) const;
    bool EvaluateJacobian(double* values) const;
    std::string FailureText() const;

private:
    void RecordEntries() const;

    Flowsheet* m_flowsheet;
    int m_rows = 0;
    int m_entries = 0;
    mutable std::vector<int> m_entryRows, m_entryColumns;
    const std::vector<VX_VarParam*>* m_columns = nullptr;
    std::vector<VX_Variable*> m_unknowns;
    std::vector<int> m_unknownOfColumn;
    zx::solve::TripletPattern m_pattern;
    zx::solve::CscPattern m_csc;
    std::vector<int> m_kept;
    std::vector<VX_Variable*> m_freeUnused;
};

}  // namespace zx::flowsheet
