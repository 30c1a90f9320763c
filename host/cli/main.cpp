// zorexp: the host command of the Morvanex220_1 model library. It lists the library's types,
// describes one of them (a container created through the library's own exports and driven
// through the container protocol, or a variable or parameter type with its effective
// defaults), and sets up, analyses and solves flowsheets of the library's types.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <iostream>

#include "components_command.hpp"
#include "describe.hpp"
#include "errors.hpp"
#include "flowsheet/flowsheet_commands.hpp"
#include "model_library.hpp"
#include "procedures_listing.hpp"
#include "report_json.hpp"
#include "report_table.hpp"
#include "types_listing.hpp"

namespace {

using namespace zorexp_cli;

void Print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

template <class Report>
void Emit(const Report& report, bool json) {
    Print(json ? ToJson(report).dump(2) + "\n" : ToText(report));
}

struct DescribeArgs {
    std::string type;
    std::vector<std::string> components, sets, fixes, frees;
};

ContainerRequest MakeRequest(const DescribeArgs& args) {
    ContainerRequest request;
    for (const std::string& c : args.components) {
        const auto first = c.find_first_not_of(" \t");
        if (first != std::string::npos) request.components.push_back(c.substr(first, c.find_last_not_of(" \t") - first + 1));
    }
    for (const std::string& s : args.sets) request.assignments.push_back(ParseSetArgument(s));
    for (const std::string& p : args.fixes) request.assignments.push_back({UserAssignment::Fix, p, {}});
    for (const std::string& p : args.frees) request.assignments.push_back({UserAssignment::Free, p, {}});
    return request;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Lists and describes the types of the Morvanex220_1 model library, and solves flowsheets."};
    app.name("zorexp");
    app.require_subcommand(1);

    bool json = false;
    auto* types = app.add_subcommand("types", "List every container, variable and parameter type.");
    types->add_flag("--json", json, "Print JSON.");

    DescribeArgs args;
    auto* describe = app.add_subcommand("describe", "Describe one type: its properties and equations, or its defaults.");
    describe->add_option("TYPE", args.type, "Type name, with or without VX_.")->required();
    describe->add_option("--components", args.components, "Component list, comma-separated.")->delimiter(',')->allow_extra_args(false);
    describe->add_option("--set", args.sets, "Assign a value: PATH=VALUE (repeatable).")->allow_extra_args(false);
    describe->add_option("--fix", args.fixes, "Fix a variable (repeatable).")->allow_extra_args(false);
    describe->add_option("--free", args.frees, "Free a variable (repeatable).")->allow_extra_args(false);
    describe->add_flag("--json", json, "Print JSON.");

    std::string procedureName;
    auto* procedures = app.add_subcommand("procedures", "List the procedure declarations and whether their routines are found.");
    procedures->add_option("NAME", procedureName, "One declaration, with or without VXProc_.");
    procedures->add_flag("--json", json, "Print JSON.");

    zx::flowsheet::SolveCommandOptions solveOptions;
    auto* solve = app.add_subcommand("solve", "Set up, analyse and solve a flowsheet file (steady state).");
    solve->add_option("FLOWSHEET", solveOptions.file, "Flowsheet file (JSON).")->required();
    solve->add_flag("--json", solveOptions.json, "Print the results as JSON.");
    solve->add_option("--csv", solveOptions.csvFile, "Also write one row per variable to this CSV file.");
    solve->add_option("--max-iterations", solveOptions.solver.max_iterations, "Newton iteration limit.");
    solve->add_option("--tolerance", solveOptions.solver.tolerance, "Scaled residual tolerance.");
    solve->add_flag("!--no-log", solveOptions.iterationLog, "Do not print the iteration log.");

    zx::flowsheet::AnalyseCommandOptions analyseOptions;
    auto* analyse = app.add_subcommand("analyse", "Count equations and unknowns and find the structural rank.");
    analyse->add_option("FLOWSHEET", analyseOptions.file, "Flowsheet file (JSON).")->required();
    analyse->add_flag("--json", analyseOptions.json, "Print JSON.");

    zx::flowsheet::CheckJacobianCommandOptions checkOptions;
    auto* check = app.add_subcommand("check-jacobian", "Compare the analytic Jacobian with finite differences.");
    check->add_option("FLOWSHEET", checkOptions.file, "Flowsheet file (JSON).")->required();

    std::string componentId;
    auto* components = app.add_subcommand("components", "List the component database, or one component with every value, unit and source.");
    components->add_option("ID", componentId, "Component id or alias (any case).");
    components->add_flag("--json", json, "Print JSON.");

    if (argc > 1 && argv[1][0] != '-') {
        bool known = false;
        for (auto* sub : {types, describe, procedures, solve, analyse, check, components}) known = known || sub->check_name(argv[1]);
        if (!known) {
            std::fprintf(stderr, "zorexp: unknown command \"%s\" (the commands are types, describe, procedures, solve, analyse, check-jacobian and components)\n", argv[1]);
            return kExitBadInput;
        }
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "zorexp: %s (zorexp --help shows the usage)\n", e.what());
        return kExitBadInput;
    }

    if (solve->parsed() || analyse->parsed() || check->parsed()) {
        try {
            const auto create = zx::flowsheet::CreatorFromFactories(
                [](const std::string& type) { return ModelLibrary::Instance().FindFactory(type); });
            if (solve->parsed()) return zx::flowsheet::RunSolve(solveOptions, create, std::cout, std::cerr);
            if (analyse->parsed()) return zx::flowsheet::RunAnalyse(analyseOptions, create, std::cout, std::cerr);
            return zx::flowsheet::RunCheckJacobian(checkOptions, create, std::cout, std::cerr);
        } catch (const HostFailure& e) {
            std::fprintf(stderr, "zorexp: %s\n", e.what());
            return kExitHostFailure;
        }
    }

    try {
        if (types->parsed()) {
            Emit(ListTypes(), json);
        } else if (procedures->parsed()) {
            const bool single = !procedureName.empty();
            const auto listing = ListProcedures(procedureName);
            Print(json ? ProceduresJson(listing, single).dump(2) + "\n" : ProceduresText(listing, single));
        } else if (components->parsed()) {
            Print(ComponentsReport(componentId, json));
        } else {
            const DescribeResult result = Describe(args.type, MakeRequest(args));
            std::visit([&](const auto& report) { Emit(report, json); }, result);
        }
        return kExitOk;
    } catch (const BadInput& e) {
        std::fprintf(stderr, "zorexp: %s\n", e.what());
        return kExitBadInput;
    } catch (const HostFailure& e) {
        std::fprintf(stderr, "zorexp: %s\n", e.what());
        return kExitHostFailure;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zorexp: internal error: %s\n", e.what());
        return kExitHostFailure;
    }
}
