// zorexp: the host command of the Morvanex220_1 model library. It lists the library's types,
// describes one of them (a container created through the library's own exports and driven
// through the container protocol, or a variable or parameter type with its effective
// defaults), and sets up, analyses and solves flowsheets of the library's types.
#include <cerrno>
#include <csignal>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include "components_command.hpp"
#include "describe.hpp"
#include "errors.hpp"
#include "flowsheet/flowsheet_commands.hpp"
#include "heap_reuse.hpp"
#include "memory_budget.hpp"
#include "model_library.hpp"
#include "out_of_memory.hpp"
#include "procedures_listing.hpp"
#include "result_plot.hpp"
#include "script_command.hpp"
#include "report_json.hpp"
#include "report_table.hpp"
#include "types_listing.hpp"
#include "units_listing.hpp"
#include "zorexp/session.hpp"
#include "zorexp/text.hpp"

namespace {

using namespace zorexp_cli;

// Messages quote what users typed: on one line, and not at any length.
void Fail(const std::string& message) { std::fprintf(stderr, "zorexp: %s\n", VX_BriefText(message, 2000).c_str()); }

void Print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

template <class Report>
void Emit(const Report& report, bool json) {
    // Texts that are not UTF-8 cannot reach a report (arguments are checked), but a JSON
    // writer must not fail on them either.
    Print(json ? ToJson(report).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n" : ToText(report));
}

struct DescribeArgs {
    std::string type;
    std::vector<std::string> components, sets, fixes, frees;
};

// Names and values of describe are text of the model's vocabulary: UTF-8 only.
void CheckText(const char* option, const std::string& text) {
    if (!VX_IsUtf8(text)) throw BadInput(std::string(option) + " " + VX_BriefText(text) + ": not UTF-8 text");
}

ContainerRequest MakeRequest(const DescribeArgs& args) {
    ContainerRequest request;
    for (const std::string& c : args.components) {
        CheckText("--components", c);
        const auto first = c.find_first_not_of(" \t");
        if (first != std::string::npos) request.components.push_back(c.substr(first, c.find_last_not_of(" \t") - first + 1));
    }
    for (const std::string& s : args.sets) {
        CheckText("--set", s);
        request.assignments.push_back(ParseSetArgument(s));
    }
    for (const std::string& p : args.fixes) {
        CheckText("--fix", p);
        request.assignments.push_back({UserAssignment::Fix, p, {}});
    }
    for (const std::string& p : args.frees) {
        CheckText("--free", p);
        request.assignments.push_back({UserAssignment::Free, p, {}});
    }
    return request;
}

// What the user typed for an option, for messages.
std::string Given(const CLI::Option* option) {
    return option->results().empty() ? std::string() : "\"" + option->results().back() + "\"";
}

// Solver options that could only mislead are refused before anything is read.
std::optional<std::string> SolveOptionProblem(const zx::flowsheet::SolveCommandOptions& o, const CLI::Option* tolerance,
                                              const CLI::Option* iterations, const CLI::Option* csv, const CLI::Option* units) {
    if (!std::isfinite(o.solver.tolerance) || o.solver.tolerance <= 0)
        return "--tolerance " + Given(tolerance) + ": the tolerance must be a finite number above 0";
    if (o.solver.max_iterations < 1) return "--max-iterations " + Given(iterations) + ": at least 1 iteration is needed";
    if (csv->count() > 0 && o.csvFile.empty()) return "--csv: give the name of the file to write";
    if (units->count() > 0 && o.units.empty()) return "--units: give SI, field or QUANTITY=UNIT (zorexp units lists them)";
    return std::nullopt;
}

// Everything written to standard output must have arrived: a full disk or a closed pipe
// turns a success into a failure.
int CheckStandardOutput(int status) {
    std::cout.flush();
    errno = 0;
    const bool failed = !std::cout || std::fflush(stdout) != 0 || std::ferror(stdout);
    if (!failed) return status;
    Fail(std::string("writing to standard output failed") + (errno ? std::string(": ") + std::strerror(errno) : ""));
    return status == kExitOk ? kExitHostFailure : status;
}

// solve --plot: the solution's CSV (the user's, or a temporary one) drawn by the Python package.
int SolveAndPlot(zx::flowsheet::SolveCommandOptions options, const zx::flowsheet::BlockCreator& create,
                 const std::string& plotFile, const std::vector<std::string>& plotVars) {
    std::string temporary;
    if (options.csvFile.empty()) {
        char name[] = "/tmp/zorexp-plot-XXXXXX";
        const int fd = mkstemp(name);
        if (fd < 0) throw HostFailure(std::string("--plot: cannot make a temporary file: ") + std::strerror(errno));
        close(fd);
        options.csvFile = temporary = name;
    }
    const int status = zx::flowsheet::RunSolve(options, create, std::cout, std::cerr);
    try {
        if (status == kExitOk) PlotResults(options.csvFile, plotFile, plotVars);
    } catch (...) {
        if (!temporary.empty()) std::remove(temporary.c_str());
        throw;
    }
    if (!temporary.empty()) std::remove(temporary.c_str());
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    KeepFreedMemoryForReuse();
    InstallOutOfMemoryReserve();
    // A closed pipe is a failed write like any other: reported, not a silent death by signal.
    std::signal(SIGPIPE, SIG_IGN);
    CLI::App app{"Lists and describes the types of the Morvanex220_1 model library, and solves flowsheets."};
    app.name("zorexp");
    app.require_subcommand(1);

    bool json = false;
    auto* types = app.add_subcommand("types", "List every container, variable and parameter type.");
    types->add_flag("--json", json, "Print JSON.");

    std::size_t maxUnknowns = 0;   // 0: from the memory available
    auto addLimit = [&](CLI::App* command) {
        command->add_option("--max-unknowns", maxUnknowns,
                            "At most this many array elements in all (default: what the memory available holds).")
            ->check(CLI::PositiveNumber);
    };

    DescribeArgs args;
    auto* describe = app.add_subcommand("describe", "Describe one type: its properties and equations, or its defaults.");
    describe->add_option("TYPE", args.type, "Type name, with or without VX_.")->required();
    describe->add_option("--components", args.components, "Component list, comma-separated.")->delimiter(',')->allow_extra_args(false);
    describe->add_option("--set", args.sets, "Assign a value: PATH=VALUE (repeatable).")->allow_extra_args(false);
    describe->add_option("--fix", args.fixes, "Fix a variable (repeatable).")->allow_extra_args(false);
    describe->add_option("--free", args.frees, "Free a variable (repeatable).")->allow_extra_args(false);
    describe->add_flag("--json", json, "Print JSON.");
    addLimit(describe);

    std::string procedureName;
    auto* procedures = app.add_subcommand("procedures", "List the procedure declarations and whether their routines are found.");
    procedures->add_option("NAME", procedureName, "One declaration, with or without VXProc_.");
    procedures->add_flag("--json", json, "Print JSON.");

    zx::flowsheet::SolveCommandOptions solveOptions;
    auto* solve = app.add_subcommand("solve", "Set up, analyse and solve a flowsheet file (steady state).");
    solve->add_option("FLOWSHEET", solveOptions.file, "Flowsheet file (JSON).")->required();
    solve->add_option("--set", solveOptions.sets, "Set a value after the file's: BLOCK.PATH=VALUE, such as 'C1.T_COOL=300 K' (repeatable).")
        ->allow_extra_args(false);
    auto* units = solve->add_option("--units", solveOptions.units, "Print results in SI, field, or per quantity (Temperature=C,Pressure=psi), combined with commas.");
    solve->add_flag("--json", solveOptions.json, "Print the results as JSON.");
    auto* csv = solve->add_option("--csv", solveOptions.csvFile, "Also write one row per variable to this CSV file (only for a solution).");
    auto* iterations = solve->add_option("--max-iterations", solveOptions.solver.max_iterations, "Newton iteration limit (at least 1).");
    auto* tolerance = solve->add_option("--tolerance", solveOptions.solver.tolerance, "Scaled residual tolerance (a finite number above 0).");
    solve->add_flag("!--no-log", solveOptions.iterationLog, "Do not print the iteration log.");
    std::string plotFile;
    std::vector<std::string> plotVars;
    auto* plot = solve->add_option("--plot", plotFile, "Draw array variables of the solution into this PNG file (Python, matplotlib).");
    solve->add_option("--plot-vars", plotVars, "The array variables to draw, BLOCK.ARRAY (repeatable; default: all).")
        ->allow_extra_args(false)
        ->needs(plot);
    addLimit(solve);

    zx::flowsheet::AnalyseCommandOptions analyseOptions;
    auto* analyse = app.add_subcommand("analyse", "Count equations and unknowns and find the structural rank.");
    analyse->add_option("FLOWSHEET", analyseOptions.file, "Flowsheet file (JSON).")->required();
    analyse->add_flag("--json", analyseOptions.json, "Print JSON.");
    addLimit(analyse);

    zx::flowsheet::CheckJacobianCommandOptions checkOptions;
    auto* check = app.add_subcommand("check-jacobian", "Compare the analytic Jacobian with finite differences.");
    check->add_option("FLOWSHEET", checkOptions.file, "Flowsheet file (JSON).")->required();
    addLimit(check);

    zx::flowsheet::SweepCommandOptions sweepOptions;
    auto* sweep = app.add_subcommand("sweep", "Solve a flowsheet at each value of one fixed variable or real parameter.");
    sweep->add_option("FLOWSHEET", sweepOptions.file, "Flowsheet file (JSON).")->required();
    sweep->add_option("--vary", sweepOptions.vary, "BLOCK.PATH=START:STOP:STEPS (STEPS + 1 evenly spaced values).")->required();
    sweep->add_option("--set", sweepOptions.sets, "Set a value after the file's: BLOCK.PATH=VALUE (repeatable).")->allow_extra_args(false);
    sweep->add_flag("--json", sweepOptions.json, "Print the points as JSON.");
    auto* sweepCsv = sweep->add_option("--csv", sweepOptions.csvFile, "Also write one row per point to this CSV file.");
    addLimit(sweep);

    std::string scriptType, scriptName;
    auto* script = app.add_subcommand("script", "Print a script that a type hands its host, as UTF-8 text.");
    script->add_option("TYPE", scriptType, "Type name, with or without VX_.")->required();
    script->add_option("NAME", scriptName, "Script name (any case), such as Initialize.")->required();
    script->add_flag("--json", json, "Print JSON: type, name, index, length and lines.");

    std::string componentId;
    auto* components = app.add_subcommand("components", "List the component database, or one component with every value, unit and source.");
    components->add_option("ID", componentId, "Component id or alias (any case).");
    components->add_flag("--json", json, "Print JSON.");

    std::string quantityName;
    auto* unitsCommand = app.add_subcommand("units", "List the quantities and the units values may be written in, or one quantity's factors.");
    unitsCommand->add_option("QUANTITY", quantityName, "One quantity (any case), such as Temperature.");
    unitsCommand->add_flag("--json", json, "Print JSON.");

    if (argc > 1 && argv[1][0] != '-') {
        bool known = false;
        for (auto* sub : {types, describe, procedures, solve, analyse, check, sweep, script, components, unitsCommand})
            known = known || sub->check_name(argv[1]);
        if (!known) {
            Fail(std::string("unknown command \"") + VX_BriefText(argv[1]) +
                 "\" (the commands are types, describe, procedures, solve, analyse, check-jacobian, sweep, script, "
                 "components and units)");
            return kExitBadInput;
        }
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return CheckStandardOutput(app.exit(e));
    } catch (const CLI::CallForAllHelp& e) {
        return CheckStandardOutput(app.exit(e));
    } catch (const CLI::ParseError& e) {
        Fail(std::string(e.what()) + " (zorexp --help shows the usage)");
        return kExitBadInput;
    }
    if (solve->parsed()) {
        if (auto problem = SolveOptionProblem(solveOptions, tolerance, iterations, csv, units)) {
            Fail(*problem);
            return kExitBadInput;
        }
    }
    if (sweep->parsed() && sweepCsv->count() > 0 && sweepOptions.csvFile.empty()) {
        Fail("--csv: give the name of the file to write");
        return kExitBadInput;
    }
    VX_Session::SetDefaultElementLimit(maxUnknowns > 0 ? maxUnknowns : ElementLimitFromMemory(AvailableMemory()));

    int status = kExitOk;
    try {
        if (solve->parsed() || analyse->parsed() || check->parsed() || sweep->parsed()) {
            const auto create = zx::flowsheet::CreatorFromFactories(
                [](const std::string& type) { return ModelLibrary::Instance().FindFactory(type); });
            if (solve->parsed() && !plotFile.empty()) status = SolveAndPlot(solveOptions, create, plotFile, plotVars);
            else if (solve->parsed()) status = zx::flowsheet::RunSolve(solveOptions, create, std::cout, std::cerr);
            else if (analyse->parsed()) status = zx::flowsheet::RunAnalyse(analyseOptions, create, std::cout, std::cerr);
            else if (sweep->parsed()) status = zx::flowsheet::RunSweep(sweepOptions, create, std::cout, std::cerr);
            else status = zx::flowsheet::RunCheckJacobian(checkOptions, create, std::cout, std::cerr);
        } else if (types->parsed()) {
            Emit(ListTypes(), json);
        } else if (procedures->parsed()) {
            const bool single = !procedureName.empty();
            const auto listing = ListProcedures(procedureName);
            Print(json ? ProceduresJson(listing, single).dump(2) + "\n" : ProceduresText(listing, single));
        } else if (components->parsed()) {
            Print(ComponentsReport(componentId, json));
        } else if (unitsCommand->parsed()) {
            Print(UnitsReport(quantityName, json));
        } else if (script->parsed()) {
            Print(ScriptReport(scriptType, scriptName, json));
        } else {
            CheckText("TYPE", args.type);
            const DescribeResult result = Describe(args.type, MakeRequest(args));
            std::visit([&](const auto& report) { Emit(report, json); }, result);
        }
    } catch (const BadInput& e) {
        Fail(e.what());
        status = kExitBadInput;
    } catch (const HostFailure& e) {
        Fail(e.what());
        status = kExitHostFailure;
    } catch (const std::bad_alloc&) {
        Fail("out of memory: the flowsheet needs more memory than this process can have");
        status = kExitHostFailure;
    } catch (const std::exception& e) {
        Fail(std::string("internal error: ") + e.what());
        status = kExitHostFailure;
    }
    return CheckStandardOutput(status);
}
