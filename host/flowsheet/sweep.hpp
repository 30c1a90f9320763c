#pragma once
// A parameter sweep over a set-up flowsheet: fixed variables or real parameters are given
// values, the flowsheet is solved for each case starting from the last converged point, and
// every variable of every block is collected. A case that fails is recorded and the sweep goes
// on from the last converged point. The command steps one property from a start to a stop
// value; the Python module solves cases of several properties on each worker. The engine
// prints nothing: each front end decides what to show.
#include <functional>
#include <string>
#include <vector>

#include "solver/newton_solver.hpp"

class VX_VarParam;
class VX_Variable;

namespace zx::flowsheet {

class EquationSystem;

// What --vary gives: "BLOCK.PATH=START:STOP:STEPS", STEPS equal intervals, so STEPS + 1 points
// from START to STOP inclusive.
struct SweepRange {
    std::string path;   // "V1.ETA", "SEL.INPUT_(2)"
    double start = 0.0, stop = 0.0;
    int steps = 0;
    int Points() const { return steps + 1; }
    double Value(int point) const;
};

// Parses the text of --vary; InputError (location "--vary") naming what is wrong.
SweepRange ParseSweepRange(const std::string& text);

struct SweepPoint {
    double value = 0.0;             // of the (first) varied property
    bool converged = false;
    zx::solve::SolveStatus status = zx::solve::SolveStatus::InvalidInput;
    int iterations = 0;
    double residualNorm = 0.0;
    std::string failure;            // one line when the point failed
    std::vector<double> values;     // every variable, in the order of SweepEngine::Names()
};

class SweepEngine {
public:
    // Resolves the path among the flowsheet's blocks; InputError when it names no block or
    // property, or a property that is not a fixed variable or a real parameter.
    SweepEngine(EquationSystem& system, SweepRange range);
    // Varies the properties named by paths ("BLOCK.PATH"), each checked as above; errors are
    // located at where ("--vary" for the command).
    SweepEngine(EquationSystem& system, const std::vector<std::string>& paths, const std::string& where);

    const SweepRange& Range() const { return m_range; }
    // "BLOCK.PATH" of every variable of every block, in block and registration order.
    const std::vector<std::string>& Names() const { return m_names; }

    // Sets point k's value and solves from the last converged point.
    SweepPoint Solve(int point, const zx::solve::SolverOptions& options);

    // Where a case starts: from the last converged case, or from the values the flowsheet
    // held when the engine was made.
    enum class Start { LastConverged, Initial };
    // Sets one value per varied property (in the order of the paths) and solves from start.
    SweepPoint SolveCase(const std::vector<double>& values, const zx::solve::SolverOptions& options,
                         Start start = Start::LastConverged);
    // The unknowns at the last converged case, and a start of the caller's choosing (the
    // solution of a nearer case); a vector of another length is ignored.
    const std::vector<double>& LastConverged() const { return m_lastConverged; }
    void SetStart(const std::vector<double>& unknowns);
    // Every point in order; progress (may be empty) is told of each as it is done.
    std::vector<SweepPoint> Run(const zx::solve::SolverOptions& options,
                                const std::function<void(int point, const SweepPoint&)>& progress);

private:
    void Resolve(const std::string& path, const std::string& where);

    EquationSystem& m_system;
    SweepRange m_range;
    std::vector<VX_VarParam*> m_varied;
    std::vector<std::string> m_variedNames;
    std::vector<VX_Variable*> m_reported;
    std::vector<std::string> m_names;
    std::vector<double> m_lastConverged;   // the unknowns at the last converged point
    std::vector<double> m_initial;         // the unknowns when the engine was made
};

}  // namespace zx::flowsheet
