#include "flowsheet/flowsheet_commands.hpp"

#include <algorithm>
#include <memory>
#include <new>
#include <optional>
#include <ostream>

#include "flowsheet/command_line_sets.hpp"
#include "flowsheet/equation_system.hpp"
#include "flowsheet/output_file.hpp"
#include "flowsheet/output_units.hpp"
#include "flowsheet/results_output.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "flowsheet/structure_diagnosis.hpp"
#include "flowsheet/sweep.hpp"
#include "flowsheet/sweep_output.hpp"

namespace zx::flowsheet {
namespace {

// A flowsheet read, set up and gathered into one system.
struct Prepared {
    std::unique_ptr<Flowsheet> sheet;
    std::unique_ptr<EquationSystem> system;
};

// Everything is read and set up before anything is solved. On failure the reason is written
// as one line and status says how the command ends. Running out of memory is left to the
// caller, which says so.
std::optional<Prepared> Prepare(const std::string& file, const BlockCreator& create, std::ostream& err, int& status,
                                const std::vector<std::string>& sets = {}) {
    Prepared p;
    FlowsheetDocument doc;
    try {
        doc = ReadFlowsheetFile(file);
        AddCommandLineSets(doc, sets);
        p.sheet = Flowsheet::Build(doc, create);
        doc = FlowsheetDocument();   // applied: its memory is given back before the equations take theirs
        p.system = std::make_unique<EquationSystem>(*p.sheet);
        return p;
    } catch (InputError& e) {
        // Faults found while applying values know their entry; the document knows its place.
        // A value from the command line is named as the user typed it, without a place in the file.
        if (IsCommandLineSet(e.Pointer())) {
            err << e.Pointer() << ": " << e.what() << "\n";
        } else {
            e.Locate(doc.PositionOf(e.Pointer()));
            err << e.Line(file) << "\n";
        }
        status = kExitBadInput;
    } catch (const ModelFailure& e) {
        err << file << ": " << e.what() << "\n";
        status = kExitNotConverged;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& e) {
        // A block threw while being set up (the runtime names the array and index).
        err << file << ": set-up failed: " << e.what() << "\n";
        status = kExitNotConverged;
    }
    // The system refers to the sheet: release it first.
    p.system.reset();
    p.sheet.reset();
    return std::nullopt;
}

// The CSV file is prepared before anything is read, so that a path that cannot be written is
// refused at once, and written only for a solution.
std::unique_ptr<OutputFile> PrepareCsv(const std::string& csvFile, const std::string& file, std::ostream& err, int& status) {
    if (SameFile(csvFile, file)) {
        err << csvFile << ": is the flowsheet file itself: give another file for the results\n";
        status = kExitBadInput;
        return nullptr;
    }
    std::string why;
    std::unique_ptr<OutputFile> csv = OutputFile::Create(csvFile, why);
    if (!csv) {
        err << csvFile << ": cannot write the CSV file: " << why << "\n";
        status = kExitBadInput;
    }
    return csv;
}

// Text results carry no status line when they are a solution; otherwise the first line says
// what they are.
void WriteStatusLine(const std::string& status, const char* meaning, std::ostream& out) {
    out << "status: " << status << " (" << meaning << ")\n";
}

}  // namespace

int RunSolve(const SolveCommandOptions& options, const BlockCreator& create, std::ostream& out, std::ostream& err) {
    int status = kExitOk;
    std::optional<OutputUnits> units;
    try {
        if (!options.units.empty()) units = OutputUnits::Parse(options.units);
    } catch (const InputError& e) {
        err << e.what() << "\n";
        return kExitBadInput;
    }
    OutputUnits* chosen = units ? &*units : nullptr;
    std::unique_ptr<OutputFile> csv;
    if (!options.csvFile.empty() && !(csv = PrepareCsv(options.csvFile, options.file, err, status))) return status;
    std::optional<Prepared> p = Prepare(options.file, create, err, status, options.sets);
    if (!p) return status;
    const StructureDiagnosis diagnosis = DiagnoseStructure(*p->system);
    WriteDiagnosis(diagnosis, err);
    if (!diagnosis.Solvable()) {
        if (options.json) WriteDiagnosisJson(diagnosis, out);
        return kExitNotSolvable;
    }

    RunSummary summary;
    bool solved = true;
    if (p->system->Rows() == 0 && p->system->Unknowns().empty()) {
        // Every variable is fixed and no block declares an equation: the values are as given.
        err << "nothing to solve: the flowsheet has no unknowns and no equations\n";
        summary.status = "no_unknowns";
        if (!options.json) WriteStatusLine(summary.status, "nothing was solved; the values are as given", out);
    } else {
        const zx::solve::SolveResult result = SolveSteadyState(*p->system, options.solver, options.iterationLog ? &err : nullptr);
        solved = result.status == zx::solve::SolveStatus::Converged;
        summary = RunSummary{StatusKey(result.status), result.iterations, result.residual_norm};
        if (!solved) {
            WriteFailureReport(*p->system, result, err);
            if (!options.json) WriteStatusLine(summary.status, "not converged; the values are the last iterate", out);
        }
    }
    if (options.json) WriteResultsJson(*p->sheet, summary, out, chosen);
    else WriteResultsText(*p->sheet, out, chosen);
    if (csv && solved) {
        WriteResultsCsv(*p->sheet, csv->Stream(), chosen);
        if (std::string why; !csv->Commit(why)) {
            err << options.csvFile << ": " << why << "\n";
            return kExitNotConverged;
        }
    }
    // A routine that does not know what the file names (a component missing from the database)
    // fails the first evaluation: that is the file's fault, not the solve's.
    const bool badInput = !solved && p->sheet->Driver().LastFailure().status == VX_E_ROUTINE_BAD_INPUT;
    p->system.reset();
    return solved ? kExitOk : badInput ? kExitBadInput : kExitNotConverged;
}

int RunAnalyse(const AnalyseCommandOptions& options, const BlockCreator& create, std::ostream& out, std::ostream& err) {
    int status = kExitOk;
    std::optional<Prepared> p = Prepare(options.file, create, err, status);
    if (!p) return status;
    const StructureDiagnosis diagnosis = DiagnoseStructure(*p->system);
    if (options.json) WriteDiagnosisJson(diagnosis, out);
    else WriteDiagnosis(diagnosis, out);
    p->system.reset();
    return diagnosis.Solvable() ? kExitOk : kExitNotSolvable;
}

int RunCheckJacobian(const CheckJacobianCommandOptions& options, const BlockCreator& create, std::ostream& out,
                     std::ostream& err) {
    int status = kExitOk;
    std::optional<Prepared> p = Prepare(options.file, create, err, status);
    if (!p) return status;
    const JacobianCheckResult result = CheckJacobian(*p->system, options.check);
    WriteJacobianCheck(*p->system, result, options.check, out);
    p->system.reset();
    return (result.failures == 0 && !result.evaluationFailed) ? kExitOk : kExitNotConverged;
}

int RunSweep(const SweepCommandOptions& options, const BlockCreator& create, std::ostream& out, std::ostream& err) {
    int status = kExitOk;
    SweepRange range;
    try {
        range = ParseSweepRange(options.vary);
    } catch (const InputError& e) {
        err << e.Location() << ": " << e.what() << "\n";
        return kExitBadInput;
    }
    std::unique_ptr<OutputFile> csv;
    if (!options.csvFile.empty() && !(csv = PrepareCsv(options.csvFile, options.file, err, status))) return status;
    std::optional<Prepared> p = Prepare(options.file, create, err, status, options.sets);
    if (!p) return status;
    std::unique_ptr<SweepEngine> engine;
    try {
        engine = std::make_unique<SweepEngine>(*p->system, range);
    } catch (const InputError& e) {
        err << e.Location() << ": " << e.what() << "\n";
        return kExitBadInput;
    }
    const StructureDiagnosis diagnosis = DiagnoseStructure(*p->system);
    WriteDiagnosis(diagnosis, err);
    if (!diagnosis.Solvable()) {
        if (options.json) WriteDiagnosisJson(diagnosis, out);
        return kExitNotSolvable;
    }
    const std::vector<SweepPoint> points = engine->Run(options.solver, [&](int k, const SweepPoint& point) {
        err << SweepProgressLine(*engine, k, point) << "\n";
    });
    if (options.json) WriteSweepJson(*engine, points, out);
    else WriteSweepText(*engine, points, out);
    if (csv) {
        WriteSweepCsv(*engine, points, csv->Stream());
        if (std::string why; !csv->Commit(why)) {
            err << options.csvFile << ": " << why << "\n";
            return kExitNotConverged;
        }
    }
    const bool all = std::all_of(points.begin(), points.end(), [](const SweepPoint& q) { return q.converged; });
    engine.reset();
    p->system.reset();
    return all ? kExitOk : kExitNotConverged;
}

}  // namespace zx::flowsheet
