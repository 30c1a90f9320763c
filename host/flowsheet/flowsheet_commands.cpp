#include "flowsheet/flowsheet_commands.hpp"

#include <fstream>
#include <memory>
#include <optional>
#include <ostream>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/results_output.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "flowsheet/structure_diagnosis.hpp"

namespace zx::flowsheet {
namespace {

// A flowsheet read, set up and gathered into one system.
struct Prepared {
    std::unique_ptr<Flowsheet> sheet;
    std::unique_ptr<EquationSystem> system;
};

// Everything is read and set up before anything is solved. On failure the reason is written
// as one line and status says how the command ends.
std::optional<Prepared> Prepare(const std::string& file, const BlockCreator& create, std::ostream& err, int& status) {
    Prepared p;
    try {
        const FlowsheetDocument doc = ReadFlowsheetFile(file);
        p.sheet = Flowsheet::Build(doc, create);
        p.system = std::make_unique<EquationSystem>(*p.sheet);
        return p;
    } catch (const InputError& e) {
        err << e.Line(file) << "\n";
        status = kExitBadInput;
    } catch (const ModelFailure& e) {
        err << file << ": " << e.what() << "\n";
        status = kExitNotConverged;
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

}  // namespace

int RunSolve(const SolveCommandOptions& options, const BlockCreator& create, std::ostream& out, std::ostream& err) {
    int status = kExitOk;
    std::optional<Prepared> p = Prepare(options.file, create, err, status);
    if (!p) return status;
    std::ofstream csv;
    if (!options.csvFile.empty()) {
        csv.open(options.csvFile, std::ios::binary | std::ios::trunc);
        if (!csv) {
            err << options.csvFile << ": cannot write the CSV file\n";
            return kExitBadInput;
        }
    }
    const StructureDiagnosis diagnosis = DiagnoseStructure(*p->system);
    WriteDiagnosis(diagnosis, err);
    if (!diagnosis.Solvable()) {
        if (options.json) WriteDiagnosisJson(diagnosis, out);
        return kExitNotSolvable;
    }
    const zx::solve::SolveResult result = SolveSteadyState(*p->system, options.solver, options.iterationLog ? &err : nullptr);
    const bool converged = result.status == zx::solve::SolveStatus::Converged;
    if (!converged) WriteFailureReport(*p->system, result, err);
    if (options.json)
        WriteResultsJson(*p->sheet, RunSummary{StatusKey(result.status), result.iterations, result.residual_norm}, out);
    else
        WriteResultsText(*p->sheet, out);
    if (csv.is_open()) {
        WriteResultsCsv(*p->sheet, csv);
        csv.close();
        if (!csv) {
            err << options.csvFile << ": writing the CSV file failed\n";
            return kExitBadInput;
        }
    }
    p->system.reset();
    return converged ? kExitOk : kExitNotConverged;
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

}  // namespace zx::flowsheet
