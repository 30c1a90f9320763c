#include "flowsheet/steady_state_solve.hpp"

#include <cctype>
#include <cstdio>
#include <ostream>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/flowsheet.hpp"
#include "flowsheet/flowsheet_system.hpp"
#include "zorexp/variable.hpp"

namespace zx::flowsheet {

zx::solve::SolveResult SolveSteadyState(const EquationSystem& system, const zx::solve::SolverOptions& options,
                                        std::ostream* log) {
    FlowsheetSystem adapter(system);
    std::vector<double> x = adapter.Values();
    if (x.empty() && system.Rows() == 0) {
        zx::solve::SolveResult nothing;   // every variable is fixed: nothing to solve
        nothing.status = zx::solve::SolveStatus::Converged;
        nothing.message = zx::solve::status_text(nothing.status);
        return nothing;
    }
    auto onIteration = [log](const zx::solve::IterationRecord& r) {
        if (!log) return;
        char line[128];
        std::snprintf(line, sizeof line, "iteration %3d  residual %.3e  step %.3e  damping %.3g\n", r.iteration,
                      r.residual_norm, r.step_norm, r.damping);
        *log << line;
    };
    zx::solve::SolveResult result = zx::solve::solve(adapter, x, adapter.Lower(), adapter.Upper(), options, onIteration);
    adapter.Place(x.data());
    return result;
}

void WriteFailureReport(const EquationSystem& system, const zx::solve::SolveResult& result, std::ostream& out) {
    out << "not converged: " << result.message << " (after " << result.iterations << " iterations, residual norm "
        << result.residual_norm << ")\n";
    if (result.non_finite_row >= 0 && result.non_finite_row < system.Rows()) {
        out << "  residual " << system.EquationName(result.non_finite_row) << " is not finite";
        if (const int block = system.BlockOfRow(result.non_finite_row); block >= 0) {
            const Block& b = system.Sheet().Blocks()[static_cast<std::size_t>(block)];
            out << ", in block " << b.name << " (" << b.type << ")";
        }
        out << "\n";
    }
    if (result.singular_column >= 0 && result.singular_column < static_cast<int>(system.Unknowns().size()))
        out << "  zero pivot at unknown " << system.VariableName(*system.Unknowns()[static_cast<std::size_t>(result.singular_column)])
            << "\n";
    if (!result.largest_residuals.empty()) {
        out << "  largest residuals:\n";
        for (const auto& [row, value] : result.largest_residuals) {
            char v[32];
            std::snprintf(v, sizeof v, "%12.4e", value);
            out << "    " << v << "  " << system.EquationName(row) << "\n";
        }
    }
}

std::string StatusKey(zx::solve::SolveStatus status) {
    const std::string name = zx::solve::status_name(status);
    std::string key;
    for (char c : name) {
        if (std::isupper(static_cast<unsigned char>(c))) {
            if (!key.empty()) key += '_';
            key += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        } else {
            key += c;
        }
    }
    return key;
}

}  // namespace zx::flowsheet
