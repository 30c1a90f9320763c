#pragma once
// The flowsheet commands as the zorexp command calls them. Each reads and sets up the whole
// file before anything else, writes results on out and diagnostics on err, and returns the
// exit status:
//   0 done; 1 the solver did not converge (or the Jacobian check found differences);
//   2 bad input (one line per fault with its file location); 3 not solvable as posed
//   (not square or structurally singular: the report names what to fix).
#include <iosfwd>
#include <string>
#include <vector>

#include "flowsheet/flowsheet.hpp"
#include "flowsheet/flowsheet_jacobian_check.hpp"
#include "flowsheet/input_error.hpp"
#include "solver/newton_solver.hpp"

namespace zx::flowsheet {

struct SolveCommandOptions {
    std::string file;
    std::vector<std::string> sets; // BLOCK.PATH=VALUE, applied after the file's values
    std::string units;             // results in these units (OutputUnits); empty: base units
    bool json = false;             // results as JSON on out instead of text
    std::string csvFile;           // also write every variable to this CSV file (never the input file)
    bool iterationLog = true;      // one line per Newton iteration on err
    zx::solve::SolverOptions solver;
};

struct AnalyseCommandOptions {
    std::string file;
    bool json = false;
};

struct SweepCommandOptions {
    std::string file;
    std::string vary;              // BLOCK.PATH=START:STOP:STEPS
    std::vector<std::string> sets; // BLOCK.PATH=VALUE, applied after the file's values
    bool json = false;             // the points as JSON on out instead of a table
    std::string csvFile;           // also write one row per point to this CSV file (never the input file)
    zx::solve::SolverOptions solver;
};

struct CheckJacobianCommandOptions {
    std::string file;
    JacobianCheckOptions check;
};

// Sets up, analyses and solves; writes the results on out (also when not converged, then
// marked as such) and the CSV file only for a solution.
int RunSolve(const SolveCommandOptions& options, const BlockCreator& create, std::ostream& out, std::ostream& err);
// Sets up, analyses, and solves at each value of the sweep from the last converged point, with a
// progress line per point on err; writes every point (failed ones marked).
int RunSweep(const SweepCommandOptions& options, const BlockCreator& create, std::ostream& out, std::ostream& err);
// Sets up and analyses only: equations against unknowns, structural rank, what to fix.
int RunAnalyse(const AnalyseCommandOptions& options, const BlockCreator& create, std::ostream& out, std::ostream& err);
// Sets up and compares the analytic Jacobian with finite differences at the file's values.
int RunCheckJacobian(const CheckJacobianCommandOptions& options, const BlockCreator& create, std::ostream& out,
                     std::ostream& err);

}  // namespace zx::flowsheet
