#pragma once
// A flowsheet set up from its document and kept alive for Python: values are read and written
// in place, the system of equations is gathered when first needed (and again after a spec
// changes), and the flowsheet's session is current only while the module works on it, so that
// several flowsheets live side by side in one interpreter.
#include <memory>
#include <string>
#include <vector>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/flowsheet.hpp"
#include "flowsheet/input_value.hpp"
#include "flowsheet/sweep.hpp"
#include "solver/newton_solver.hpp"

class VX_Type;

namespace zorexp_python {

class LiveSheet {
public:
    // Reads the document (flowsheet-file JSON) and sets it up; InputFault or SolveFault, with
    // the line and column in the document when it is the user's file (located).
    LiveSheet(const std::string& documentJson, std::string source, bool located);
    ~LiveSheet();
    LiveSheet(const LiveSheet&) = delete;
    LiveSheet& operator=(const LiveSheet&) = delete;

    const std::string& Source() const { return m_source; }
    zx::flowsheet::Flowsheet& Sheet() { return *m_sheet; }

    // The property "BLOCK.PATH" names (globals dereferenced); InputFault naming the path.
    VX_Type& Resolve(const std::string& path);
    // Applies a value (read from flowsheet-file JSON, or a list of numbers made in code) to the
    // property, through the same code that applies a file's values.
    void Apply(const std::string& path, const zx::flowsheet::InputValue& value);

    // The system of equations, gathered on first use.
    zx::flowsheet::EquationSystem& System();
    // The structural analysis as the command's `analyse --json` prints it.
    std::string AnalyseJson();

    struct SolveOutcome {
        zx::solve::SolveResult result;
        std::vector<std::pair<std::string, double>> largest;   // labelled residuals at the end point
        double wallSeconds = 0.0;
    };
    // Solves from the current values; SolveFault when the system is not square and
    // structurally nonsingular (the command's diagnosis, on one line).
    SolveOutcome Solve(const zx::solve::SolverOptions& options);

    // Cases of a sweep: the named fixed variables or real parameters are varied.
    zx::flowsheet::SweepEngine& Cases(const std::vector<std::string>& paths);

private:
    friend class SessionScope;
    std::string m_source;
    std::unique_ptr<zx::flowsheet::Flowsheet> m_sheet;
    std::unique_ptr<zx::flowsheet::EquationSystem> m_system;
    std::unique_ptr<zx::flowsheet::SweepEngine> m_cases;
    std::vector<std::string> m_casePaths;
};

// Makes a sheet's session current for the scope, and the built-in one again after it.
class SessionScope {
public:
    explicit SessionScope(LiveSheet& sheet);
    ~SessionScope();
    SessionScope(const SessionScope&) = delete;
    SessionScope& operator=(const SessionScope&) = delete;
};

}  // namespace zorexp_python
