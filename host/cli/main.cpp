// zorexp: the host command of the Morvanex220_1 model library. It lists the library's types
// and describes one of them: a container created through the library's own exports and driven
// through the container protocol, or a variable or parameter type with its effective defaults.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "describe.hpp"
#include "errors.hpp"
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
    CLI::App app{"Lists and describes the types of the Morvanex220_1 model library."};
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

    if (argc > 1 && argv[1][0] != '-' && !types->check_name(argv[1]) && !describe->check_name(argv[1])) {
        std::fprintf(stderr, "zorexp: unknown command \"%s\" (the commands are types and describe)\n", argv[1]);
        return kExitBadInput;
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

    try {
        if (types->parsed()) {
            Emit(ListTypes(), json);
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
