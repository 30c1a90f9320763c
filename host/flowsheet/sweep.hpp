#pragma once
// A parameter sweep over a set-up flowsheet: one fixed variable or real parameter is stepped
// from a start to a stop value, the flowsheet is solved at each value starting from the last
// converged point, and every variable of every block is collected. A point that fails is
// recorded and the sweep goes on from the last converged point. The engine prints nothing:
// the command (and any other front end) decides what to show.
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
    double value = 0.0;             // of the varied property
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

    const SweepRange& Range() const { return m_range; }
    // "BLOCK.PATH" of every variable of every block, in block and registration order.
    const std::vector<std::string>& Names() const { return m_names; }

    // Sets point k's value and solves from the last converged point.
    SweepPoint Solve(int point, const zx::solve::SolverOptions& options);
    // Every point in order; progress (may be empty) is told of each as it is done.
    std::vector<SweepPoint> Run(const zx::solve::SolverOptions& options,
                                const std::function<void(int point, const SweepPoint&)>& progress);

private:
    EquationSystem& m_system;
    SweepRange m_range;
    VX_VarParam* m_varied = nullptr;
    std::string m_variedName;
    std::vector<VX_Variable*> m_reported;
    std::vector<std::string> m_names;
    std::vector<double> m_lastConverged;   // the unknowns at the last converged point
};

}  // namespace zx::flowsheet
