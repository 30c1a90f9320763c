#include "live_sheet.hpp"

#include <chrono>
#include <sstream>

#include "flowsheet/flowsheet_document.hpp"
#include "flowsheet/input_error.hpp"
#include "flowsheet/set_application.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "flowsheet/structure_diagnosis.hpp"
#include "model_library.hpp"
#include "python_errors.hpp"
#include "solver/largest_residuals.hpp"
#include "zorexp/zorexp.hpp"

namespace zorexp_python {
namespace {

constexpr int kLargestResiduals = 5;

const zx::flowsheet::BlockCreator& Creator() {
    static const zx::flowsheet::BlockCreator create = zx::flowsheet::CreatorFromFactories(
        [](const std::string& type) { return zorexp_cli::ModelLibrary::Instance().FindFactory(type); });
    return create;
}

// The command's diagnosis lines joined into one.
std::string OneLine(const std::string& text) {
    std::string out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        const auto first = line.find_first_not_of(' ');
        if (first == std::string::npos) continue;
        out += (out.empty() ? "" : "; ") + line.substr(first);
    }
    return out;
}

}  // namespace

SessionScope::SessionScope(LiveSheet& sheet) { VX_Session::MakeCurrent(&sheet.m_sheet->Session()); }
SessionScope::~SessionScope() { VX_Session::MakeCurrent(nullptr); }

LiveSheet::LiveSheet(const std::string& documentJson, std::string source, bool located) : m_source(std::move(source)) {
    VX_Session::MakeCurrent(nullptr);
    Translated(m_source, [&] {
        zx::flowsheet::FlowsheetDocument doc;
        try {
            doc = zx::flowsheet::ReadFlowsheetText(documentJson);
            m_sheet = zx::flowsheet::Flowsheet::Build(doc, Creator());   // its session is current after
        } catch (zx::flowsheet::InputError& e) {
            e.Locate(doc.PositionOf(e.Pointer()));
            throw;
        }
    }, located);
    VX_Session::MakeCurrent(nullptr);
}

LiveSheet::~LiveSheet() {
    // Sweep cases and the system refer to the sheet; its blocks leave while their session is current.
    VX_Session::MakeCurrent(&m_sheet->Session());
    m_cases.reset();
    m_system.reset();
    m_sheet.reset();
    VX_Session::MakeCurrent(nullptr);
}

VX_Type& LiveSheet::Resolve(const std::string& path) {
    const auto dot = path.find('.');
    const std::string blockName = path.substr(0, dot);
    for (const zx::flowsheet::Block& b : m_sheet->Blocks()) {
        if (!VX_EqualCI(b.name.c_str(), blockName.c_str())) continue;
        if (dot == std::string::npos) return *b.model;
        const VX_PathResolution found = VX_ResolvePath(*b.model, path.substr(dot + 1));
        if (!found.object) throw InputFault(path + ": block " + b.name + " (" + b.type + "): " + found.problem);
        VX_Type* target = found.object;
        if (auto* g = dynamic_cast<VX_GlobalBase*>(target); g && g->Target()) target = g->Target();
        return *target;
    }
    std::string names;
    for (const zx::flowsheet::Block& b : m_sheet->Blocks()) names += (names.empty() ? "" : ", ") + b.name;
    throw InputFault(path + ": the flowsheet has no block \"" + blockName + "\"" +
                     (names.empty() ? " (it has no blocks)" : " (its blocks: " + names + ")"));
}

void LiveSheet::Apply(const std::string& path, const zx::flowsheet::InputValue& value) {
    SessionScope scope(*this);
    VX_Type& target = Resolve(path);
    const auto dot = path.find('.');
    const std::string pointer = "/blocks/" + path.substr(0, dot) + "/set/" + (dot == std::string::npos ? "" : path.substr(dot + 1));
    try {
        zx::flowsheet::ApplyValue(target, value, pointer, path);
    } catch (const zx::flowsheet::InputError& e) {
        // The message names the property and the value; the value's place in a text made by the
        // package means nothing to the user.
        throw InputFault(e.what());
    }
    // A spec may have changed: the unknowns are gathered again when next needed.
    m_cases.reset();
    m_system.reset();
}

zx::flowsheet::EquationSystem& LiveSheet::System() {
    if (!m_system) {
        SessionScope scope(*this);
        Translated(m_source, [&] { m_system = std::make_unique<zx::flowsheet::EquationSystem>(*m_sheet); });
    }
    return *m_system;
}

std::string LiveSheet::AnalyseJson() {
    zx::flowsheet::EquationSystem& system = System();
    SessionScope scope(*this);
    std::ostringstream out;
    zx::flowsheet::WriteDiagnosisJson(zx::flowsheet::DiagnoseStructure(system), out);
    return out.str();
}

LiveSheet::SolveOutcome LiveSheet::Solve(const zx::solve::SolverOptions& options) {
    zx::flowsheet::EquationSystem& system = System();
    SessionScope scope(*this);
    const zx::flowsheet::StructureDiagnosis diagnosis = zx::flowsheet::DiagnoseStructure(system);
    if (!diagnosis.Solvable() && !(system.Rows() == 0 && system.Unknowns().empty())) {
        std::ostringstream text;
        zx::flowsheet::WriteDiagnosis(diagnosis, text);
        throw SolveFault(m_source + ": " + OneLine(text.str()));
    }
    SolveOutcome outcome;
    const auto started = std::chrono::steady_clock::now();
    outcome.result = zx::flowsheet::SolveSteadyState(system, options, nullptr);
    outcome.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::vector<double> r(static_cast<std::size_t>(system.Rows()));
    if (!r.empty() && system.EvaluateResiduals(r.data()))
        for (const auto& [row, value] : zx::solve::largest_residuals(r.data(), system.Rows(), kLargestResiduals))
            outcome.largest.emplace_back(system.EquationName(row), value);
    return outcome;
}

zx::flowsheet::SweepEngine& LiveSheet::Cases(const std::vector<std::string>& paths) {
    zx::flowsheet::EquationSystem& system = System();
    if (!m_cases || paths != m_casePaths) {
        SessionScope scope(*this);
        m_cases.reset();
        Translated(m_source, [&] { m_cases = std::make_unique<zx::flowsheet::SweepEngine>(system, paths, "sweep"); });
        m_casePaths = paths;
    }
    return *m_cases;
}

}  // namespace zorexp_python
