#include "flowsheet/sweep.hpp"

#include <charconv>
#include <cmath>
#include <utility>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/flowsheet.hpp"
#include "flowsheet/input_error.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "flowsheet/variable_walk.hpp"
#include "zorexp/zorexp.hpp"

namespace zx::flowsheet {
namespace {

constexpr const char* kWhere = "--vary";

double Number(const std::string& text, const std::string& what, const std::string& whole) {
    double v = 0.0;
    const char* end = text.data() + text.size();
    const auto [ptr, ec] = std::from_chars(text.data(), end, v);
    if (ec != std::errc() || ptr != end || !std::isfinite(v))
        throw InputError(kWhere, "\"" + whole + "\": the " + what + " \"" + text + "\" is not a number");
    return v;
}

}  // namespace

double SweepRange::Value(int point) const {
    if (steps == 0) return start;
    if (point == steps) return stop;   // exactly the stop value, whatever the rounding
    return start + (stop - start) * static_cast<double>(point) / static_cast<double>(steps);
}

SweepRange ParseSweepRange(const std::string& text) {
    const auto eq = text.rfind('=');
    if (eq == std::string::npos || eq == 0)
        throw InputError(kWhere, "\"" + text + "\" is not PATH=START:STOP:STEPS");
    SweepRange r;
    r.path = text.substr(0, eq);
    const std::string range = text.substr(eq + 1);
    const auto c1 = range.find(':'), c2 = c1 == std::string::npos ? c1 : range.find(':', c1 + 1);
    if (c2 == std::string::npos || range.find(':', c2 + 1) != std::string::npos)
        throw InputError(kWhere, "\"" + text + "\": the range is START:STOP:STEPS");
    r.start = Number(range.substr(0, c1), "start", text);
    r.stop = Number(range.substr(c1 + 1, c2 - c1 - 1), "stop", text);
    const std::string steps = range.substr(c2 + 1);
    const auto [ptr, ec] = std::from_chars(steps.data(), steps.data() + steps.size(), r.steps);
    if (ec != std::errc() || ptr != steps.data() + steps.size() || r.steps < 0)
        throw InputError(kWhere, "\"" + text + "\": the steps \"" + steps + "\" are not a whole number of 0 or more");
    return r;
}

SweepEngine::SweepEngine(EquationSystem& system, SweepRange range)
    : SweepEngine(system, std::vector<std::string>{range.path}, kWhere) {
    m_range = std::move(range);
}

SweepEngine::SweepEngine(EquationSystem& system, const std::vector<std::string>& paths, const std::string& where)
    : m_system(system) {
    for (const std::string& path : paths) Resolve(path, where);
    for (const Block& b : system.Sheet().Blocks())
        ForEachVariable(*b.model, [&](VX_Variable& var) {
            m_reported.push_back(&var);
            m_names.push_back(b.name + "." + var.Path());
        });
    for (VX_Variable* u : system.Unknowns()) m_lastConverged.push_back(u->fv());
    m_initial = m_lastConverged;
}

void SweepEngine::Resolve(const std::string& path, const std::string& where) {
    Flowsheet& sheet = m_system.Sheet();
    const auto dot = path.find('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == path.size())
        throw InputError(where, "sweep path \"" + path + "\" is not BLOCK.PROPERTY");
    const std::string blockName = path.substr(0, dot), property = path.substr(dot + 1);
    const Block* block = nullptr;
    for (const Block& b : sheet.Blocks())
        if (VX_EqualCI(b.name.c_str(), blockName.c_str())) block = &b;
    if (!block) throw InputError(where, "sweep path \"" + path + "\": the flowsheet has no block " + blockName);
    const VX_PathResolution found = VX_ResolvePath(*block->model, property);
    if (!found.object)
        throw InputError(where, "sweep path \"" + path + "\": block " + block->name + " (" + block->type +
                                    "): " + found.problem);
    auto* p = dynamic_cast<VX_VarParam*>(found.object);
    auto* v = dynamic_cast<VX_Variable*>(found.object);
    const bool fixedVariable = v && v->CurrSpec() == VX_SPEC_FIXED;
    const bool realParameter = p && !v && p->GetKind() == VX_VarParam::RealParameter;
    if (!fixedVariable && !realParameter)
        throw InputError(where, "sweep path \"" + path + "\": " + property + " of block " + block->name + " (" +
                                    block->type + ") is " +
                                    (v ? std::string("a free variable") : std::string("not a real value")) +
                                    "; a sweep varies a fixed variable or a real parameter");
    m_varied.push_back(p);
    m_variedNames.push_back(sheet.NameOf(*found.object));
}

void SweepEngine::SetStart(const std::vector<double>& unknowns) {
    if (unknowns.size() == m_lastConverged.size()) m_lastConverged = unknowns;
}

SweepPoint SweepEngine::Solve(int point, const zx::solve::SolverOptions& options) {
    return SolveCase({m_range.Value(point)}, options);
}

SweepPoint SweepEngine::SolveCase(const std::vector<double>& values, const zx::solve::SolverOptions& options,
                                  Start start) {
    SweepPoint out;
    out.value = values.empty() ? 0.0 : values.front();
    const auto& unknowns = m_system.Unknowns();
    const std::vector<double>& from = start == Start::Initial ? m_initial : m_lastConverged;
    for (std::size_t k = 0; k < unknowns.size(); ++k) unknowns[k]->SetSolverValue(from[k]);
    for (std::size_t k = 0; k < m_varied.size() && k < values.size() && out.failure.empty(); ++k) {
        std::string why;
        if (m_varied[k]->AssignUser(VX_ATTR_VALUE, VX_Value(values[k], 0), &why) == VX_AS_REFUSED)
            out.failure = m_variedNames[k] + " = " + VX_Value(values[k], 0).ToString() + " refused: " + why;
    }
    if (out.failure.empty()) {
        const zx::solve::SolveResult result = SolveSteadyState(m_system, options, nullptr);
        out.status = result.status;
        out.iterations = result.iterations;
        out.residualNorm = result.residual_norm;
        out.converged = result.status == zx::solve::SolveStatus::Converged;
        if (out.converged) {
            for (std::size_t k = 0; k < unknowns.size(); ++k) m_lastConverged[k] = unknowns[k]->fv();
        } else {
            out.failure = StatusKey(result.status) + (result.message.empty() ? "" : ": " + result.message);
        }
    }
    out.values.reserve(m_reported.size());
    for (VX_Variable* v : m_reported) out.values.push_back(v->fv());
    return out;
}

std::vector<SweepPoint> SweepEngine::Run(const zx::solve::SolverOptions& options,
                                         const std::function<void(int point, const SweepPoint&)>& progress) {
    std::vector<SweepPoint> points;
    points.reserve(static_cast<std::size_t>(m_range.Points()));
    for (int k = 0; k < m_range.Points(); ++k) {
        points.push_back(Solve(k, options));
        if (progress) progress(k, points.back());
    }
    return points;
}

}  // namespace zx::flowsheet
