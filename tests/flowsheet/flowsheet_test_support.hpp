// Shared by the flowsheet tests: blocks made from the model classes directly, flowsheets
// set up from text, and files for the commands.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <unistd.h>
#include <string>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/flowsheet.hpp"
#include "flowsheet/flowsheet_commands.hpp"
#include "flowsheet/json_document.hpp"
#include "models/unitops/rplug_tcool.hpp"
#include "models/unitops/rplug_tcool1.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "frame/check_cases.hpp"

namespace zx::flowsheet::testing {

// The types that have a model description, by type name; anything else is unknown.
inline VX_Type* CreateBlock(const std::string& type, std::string& error) {
    for (const VX_CheckCase& c : kVX_CheckCases) {
        if (!VX_EqualCI(type.c_str(), c.type)) continue;
        VX_ModelType* made = c.make();
        made->AddRef();
        return made;
    }
    error = "the tests make the types that have a model description only";
    return nullptr;
}

// A block of a document built in code, located where a file would hold it.
inline BlockSpec Block(const std::string& name, const std::string& type) {
    BlockSpec b;
    b.name = name;
    b.type = type;
    b.pointer = "/blocks/" + name;
    return b;
}

// A value to set, written as JSON.
inline SetEntry Entry(const std::string& path, const Json& value, const std::string& pointer) {
    SetEntry e;
    e.path = path;
    e.value = InputValue::Parse(value.dump());
    e.pointer = pointer;
    return e;
}

// A document over the components A and B with these blocks and connections.
inline FlowsheetDocument Sheet(std::vector<BlockSpec> blocks, std::vector<ConnectionSpec> connections) {
    FlowsheetDocument doc;
    ComponentListSpec list;
    list.name = "feed";
    list.components = {"A", "B"};
    list.pointer = "/components/feed";
    doc.componentLists.push_back(std::move(list));
    doc.blocks = std::move(blocks);
    for (std::size_t k = 0; k < connections.size(); ++k) connections[k].pointer = "/connections/" + std::to_string(k);
    doc.connections = std::move(connections);
    return doc;
}

// A document built, gathered into one system and solved with the default options.
struct Solved {
    std::unique_ptr<Flowsheet> sheet;
    std::unique_ptr<EquationSystem> system;
    zx::solve::SolveResult result;
};

inline Solved Solve(const FlowsheetDocument& doc, const BlockCreator& create = CreateBlock) {
    Solved s;
    s.sheet = Flowsheet::Build(doc, create);
    s.system = std::make_unique<EquationSystem>(*s.sheet);
    s.result = SolveSteadyState(*s.system, zx::solve::SolverOptions{}, nullptr);
    return s;
}

// A flowsheet set up from text and gathered into one system.
struct SetUpSheet {
    std::unique_ptr<Flowsheet> sheet;
    std::unique_ptr<EquationSystem> system;

    explicit SetUpSheet(const std::string& text, const BlockCreator& create = CreateBlock)
        : sheet(Flowsheet::Build(ReadFlowsheetText(text), create)), system(std::make_unique<EquationSystem>(*sheet)) {}
};

// The location and message of the InputError that reading and setting up the text throws,
// as "location: message", or "no error".
inline std::string InputErrorOf(const std::string& text) {
    try {
        SetUpSheet s(text);
    } catch (const InputError& e) {
        return e.Location() + ": " + e.what();
    }
    return "no error";
}

// A file holding text, removed with the object.
class TempFile {
public:
    explicit TempFile(const std::string& text, const std::string& suffix = ".json") {
        static int counter = 0;
        m_path = (std::filesystem::temp_directory_path() /
                  ("zx_flowsheet_test_" + std::to_string(::getpid()) + "_" + std::to_string(counter++) + suffix))
                     .string();
        std::ofstream(m_path) << text;
    }
    ~TempFile() { std::remove(m_path.c_str()); }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

// Files beside path named as its temporary files are (".NAME.XXXXXX").
inline int TemporaryFilesBeside(const std::string& path) {
    const std::filesystem::path p(path);
    int n = 0;
    for (const auto& e : std::filesystem::directory_iterator(p.parent_path()))
        n += e.path().filename().string().rfind("." + p.filename().string() + ".", 0) == 0;
    return n;
}

// One RPLUG_TCOOL1 block named C1 with CTYPE "TCool-Spec" over points 0..npts; extra is
// spliced into its "set" object.
inline std::string HeatFluxSheet(int npts, const std::string& extra) {
    return R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"NPTS": )" + std::to_string(npts) +
           R"(, "CTYPE": "TCool-Spec")" + (extra.empty() ? "" : ", " + extra) + "}}}}";
}

}  // namespace zx::flowsheet::testing
