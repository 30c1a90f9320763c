// A sweep of the vapour relief valve example over 1,000 outlet-to-inlet pressure ratios across
// the critical ratio, against as many solves at one ratio from the converged point (the least a
// solve can cost: one evaluation, no step), in the same process. The runtime calls a property
// routine only when its inputs changed (bench_procedures counts that), so the sweep's routine
// calls are those of the distinct states the Newton iterations visit.
#include <benchmark/benchmark.h>

#include <fstream>
#include <sstream>
#include <string>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/flowsheet.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "flowsheet/sweep.hpp"
#include "models/unitops/psv_vap.hpp"

namespace {

using namespace zx::flowsheet;

constexpr int kPoints = 1000;

VX_Type* Create(const std::string& type, std::string& error) {
    if (type != "PSV_VAP") {
        error = "the benchmark makes PSV_VAP only";
        return nullptr;
    }
    VX_Type* made = new VX_PSV_VAP(true);
    made->AddRef();
    return made;
}

std::string ExampleText() {
    std::ifstream in(ZX_EXAMPLES_DIR "/vapour_relief_valve.json");
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

struct Valve {
    std::unique_ptr<Flowsheet> sheet = Flowsheet::Build(ReadFlowsheetText(ExampleText()), Create);
    std::unique_ptr<EquationSystem> system = std::make_unique<EquationSystem>(*sheet);
};

zx::solve::SolverOptions Options() {
    zx::solve::SolverOptions o;
    o.verbose_log = false;
    return o;
}

void BM_Sweep1000Ratios(benchmark::State& state) {
    Valve valve;
    int converged = 0;
    for (auto _ : state) {
        SweepEngine engine(*valve.system, ParseSweepRange("V1.ETA=0.2:0.9:" + std::to_string(kPoints - 1)));
        converged = 0;
        for (const SweepPoint& p : engine.Run(Options(), {})) converged += p.converged;
        benchmark::DoNotOptimize(converged);
    }
    state.counters["points"] = kPoints;
    state.counters["converged"] = converged;
}
BENCHMARK(BM_Sweep1000Ratios)->Unit(benchmark::kMillisecond);

void BM_Baseline1000SolvesAtTheSolution(benchmark::State& state) {
    Valve valve;
    SolveSteadyState(*valve.system, Options(), nullptr);
    for (auto _ : state) {
        for (int k = 0; k < kPoints; ++k) {
            const auto result = SolveSteadyState(*valve.system, Options(), nullptr);
            benchmark::DoNotOptimize(result.iterations);
        }
    }
    state.counters["points"] = kPoints;
}
BENCHMARK(BM_Baseline1000SolvesAtTheSolution)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
