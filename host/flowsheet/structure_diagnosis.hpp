#pragma once
// Analysis before solving: equations against unknowns, the structural rank, and when the
// system is not square and structurally nonsingular, which equations and variables make it
// over- or under-specified and what to change.
//
// The over- and under-determined parts of the system (its coarse Dulmage-Mendelsohn blocks)
// are split into independent groups (connected through shared equations or unknowns), so that
// the advice says how many to change in each group: "fix 1 of: C1.U, ..." and "fix 4 of:
// C2.DX, ..." rather than "fix 5 of" a list that mixes both.
#include <iosfwd>
#include <string>
#include <vector>

#include "solver/structural_analysis.hpp"

namespace zx::flowsheet {

class EquationSystem;

struct StructureFault {
    enum Kind { TooManyUnknowns, TooManyEquations };
    Kind kind = TooManyUnknowns;
    int count = 0;                     // how many unknowns to fix, or equations to drop
    // TooManyUnknowns: the unknowns of the group (fix `count` of them);
    // TooManyEquations: the equations of the group (remove or relax `count` of them).
    std::vector<std::string> names;
    int candidates = 0;                // how many there are in all (names holds the first few)
    // TooManyEquations: fixed variables in those equations (free `count` of them instead).
    std::vector<std::string> fixedNames;
    int fixedCandidates = 0;
};

struct StructureDiagnosis {
    int equations = 0;
    int unknowns = 0;
    int structuralRank = 0;
    // "solvable", "under_specified", "over_specified", "structurally_singular" or "empty" (no
    // equations and no unknowns: nothing to solve).
    std::string status;
    std::vector<StructureFault> faults;   // the first few groups, in row and column order
    int faultGroups = 0;                  // how many groups there are in all
    std::vector<std::string> freeUnused;  // free variables in no equation (a note)
    int freeUnusedCount = 0;

    bool Solvable() const { return status == "solvable"; }
};

// At most maxListed names per list and maxListed groups.
StructureDiagnosis DiagnoseStructure(const EquationSystem& system, std::size_t maxListed = 10);

// The diagnosis for users, a few lines.
void WriteDiagnosis(const StructureDiagnosis& d, std::ostream& out);
// The same as one JSON object: {"status", "equations", "unknowns", "structural_rank",
// "faults": [{"kind": "too_many_unknowns" | "too_many_equations", "count", "names",
// "candidates", "fixed_names", "fixed_candidates"}], "fault_groups", "free_unused": {"count",
// "names"}}.
void WriteDiagnosisJson(const StructureDiagnosis& d, std::ostream& out);

}  // namespace zx::flowsheet
