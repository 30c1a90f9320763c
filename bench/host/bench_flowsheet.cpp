// A flowsheet of one RPLUG_TCOOL of a million cells, from its file contents to the converged
// duties: reading, set-up of the block through the protocol, gathering the equations, the
// analysis before solving and the Newton solve, against one KLU analyse + factor + solve of the
// same Jacobian in the same process, so that the ratio means the same on any machine.
//
// The block: cell temperatures falling along the tube (fixed), geometry and coolant fixed;
// unknowns are the cell length DX and the duties Q(1..N).
//
// BM_WholeSolveAgainstFloor times whole processes instead: `zorexp solve FILE --json` against a
// hand-written program that does the same work on the same file (a yardstick kept outside the
// project), run alternately as child processes; wall time, CPU time and peak resident memory
// of each, medians over the runs. Environment: ZX_FLOOR (the program), ZX_FLOWSHEET (the file),
// ZX_ZOREXP (default: zorexp beside this benchmark). Skipped when ZX_FLOOR or ZX_FLOWSHEET is
// not set.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <suitesparse/klu.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/flowsheet.hpp"
#include "flowsheet/json_document.hpp"
#include "flowsheet/flowsheet_system.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "flowsheet/structure_diagnosis.hpp"
#include "models/unitops/rplug_tcool.hpp"

namespace {

using namespace zx::flowsheet;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point t0) { return std::chrono::duration<double>(Clock::now() - t0).count(); }

VX_Type* Create(const std::string& type, std::string& error) {
    if (!VX_EqualCI(type.c_str(), "RPLUG_TCOOL")) {
        error = "the benchmark makes RPLUG_TCOOL only";
        return nullptr;
    }
    auto* m = new VX_RPLUG_TCOOL(true);
    m->AddRef();
    return m;
}

Json Document(int cells) {
    Json temperatures = Json::array();
    for (int i = 1; i <= cells; ++i) temperatures.push_back(300.0 + 100.0 * (1.0 - static_cast<double>(i) / cells));
    Json set = Json::object();
    set["NPTS"] = cells;
    set["T_CELL0"] = Json{{"value", 400.0}, {"spec", "Fixed"}};
    set["T_CELL"] = Json{{"value", std::move(temperatures)}, {"spec", "Fixed"}};
    set["U"] = 0.25;
    set["T_COOL"] = 280.0;
    set["DIAM"] = Json{{"value", 0.05}, {"spec", "Fixed"}};
    set["NTUBE"] = Json{{"value", 500.0}, {"spec", "Fixed"}};
    set["L"] = Json{{"value", 12.0}, {"spec", "Fixed"}};
    Json doc = Json::object();
    doc["blocks"]["R1"] = Json{{"type", "RPLUG_TCOOL"}, {"set", std::move(set)}};
    return doc;
}

// One analyse + factor + solve of the system's Jacobian at the current point, KLU defaults.
double KluOnce(const EquationSystem& equations) {
    FlowsheetSystem adapter(equations);
    const std::vector<double> x = adapter.Values();
    const auto csc = zx::solve::CscPattern::from_triplets(adapter.pattern());
    std::vector<double> triplets(static_cast<std::size_t>(csc.n_triplets())), values(static_cast<std::size_t>(csc.nnz()));
    std::vector<double> rhs(x.size());
    adapter.jacobian(x.data(), triplets.data());
    csc.scatter(triplets.data(), values.data());
    adapter.residuals(x.data(), rhs.data());

    const auto t0 = Clock::now();
    klu_common c;
    klu_defaults(&c);
    klu_symbolic* sym = klu_analyze(csc.n_cols, const_cast<int*>(csc.col_start.data()), const_cast<int*>(csc.row_index.data()), &c);
    klu_numeric* num = sym ? klu_factor(const_cast<int*>(csc.col_start.data()), const_cast<int*>(csc.row_index.data()),
                                        values.data(), sym, &c)
                           : nullptr;
    const bool ok = num && klu_solve(sym, num, csc.n_cols, 1, rhs.data(), &c);
    const double t = SecondsSince(t0);
    klu_free_numeric(&num, &c);
    klu_free_symbolic(&sym, &c);
    if (!ok) std::abort();
    return t;
}

void BM_CoolantFlowsheet(benchmark::State& state) {
    const int cells = static_cast<int>(state.range(0));
    const std::string text = Document(cells).dump();
    double read = 0, setUp = 0, pattern = 0, analysis = 0, solve = 0, kluAnalyse = 0, factor = 0, total = 0, klu = 0,
           teardown = 0;
    int iterations = 0;
    for (auto _ : state) {
        const double before = read + setUp + pattern + analysis + solve;
        auto t = Clock::now();
        const FlowsheetDocument document = ReadFlowsheetText(text);
        read += SecondsSince(t);
        t = Clock::now();
        std::unique_ptr<Flowsheet> sheet = Flowsheet::Build(document, Create);
        setUp += SecondsSince(t);
        t = Clock::now();
        auto equations = std::make_unique<EquationSystem>(*sheet);
        pattern += SecondsSince(t);
        t = Clock::now();
        const StructureDiagnosis diagnosis = DiagnoseStructure(*equations);
        analysis += SecondsSince(t);
        if (!diagnosis.Solvable()) {
            state.SkipWithError("the flowsheet is not square");
            break;
        }
        zx::solve::SolverOptions options;
        options.verbose_log = false;
        t = Clock::now();
        const zx::solve::SolveResult result = SolveSteadyState(*equations, options, nullptr);
        solve += SecondsSince(t);
        if (result.status != zx::solve::SolveStatus::Converged) {
            state.SkipWithError(result.message.c_str());
            break;
        }
        kluAnalyse += result.analyse_seconds;
        factor += result.factor_seconds;
        iterations = result.iterations;
        total = read + setUp + pattern + analysis + solve;
        state.SetIterationTime(total - before);
        klu += KluOnce(*equations);
        t = Clock::now();
        equations.reset();
        sheet.reset();
        teardown += SecondsSince(t);
    }
    using C = benchmark::Counter;
    state.counters["unknowns"] = cells + 1;
    state.counters["read_s"] = C(read, C::kAvgIterations);
    state.counters["setup_s"] = C(setUp, C::kAvgIterations);
    state.counters["pattern_s"] = C(pattern, C::kAvgIterations);
    state.counters["analysis_s"] = C(analysis, C::kAvgIterations);
    state.counters["solve_s"] = C(solve, C::kAvgIterations);
    state.counters["klu_order_s"] = C(kluAnalyse, C::kAvgIterations);
    state.counters["factor_s"] = C(factor, C::kAvgIterations);
    state.counters["total_s"] = C(total, C::kAvgIterations);
    state.counters["klu_once_s"] = C(klu, C::kAvgIterations);
    state.counters["ratio"] = klu > 0 ? total / klu : 0.0;
    state.counters["teardown_s"] = C(teardown, C::kAvgIterations);
    state.counters["newton_its"] = iterations;
}

struct ProcessCost {
    double wall = 0, cpu = 0, rssMiB = 0;
};

// Runs argv with its output thrown away; its wall time, user + system time and peak RSS.
ProcessCost RunProcess(const std::vector<std::string>& argv) {
    std::vector<char*> args;
    for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    const auto t0 = Clock::now();
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage{};
    if (spawned != 0 || wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return ProcessCost{-1, -1, -1};
    auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec); };
    return ProcessCost{SecondsSince(t0), seconds(usage.ru_utime) + seconds(usage.ru_stime),
                       static_cast<double>(usage.ru_maxrss) / 1024.0};
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? 0.0 : v[v.size() / 2];
}

void BM_WholeSolveAgainstFloor(benchmark::State& state) {
    const char* floor = std::getenv("ZX_FLOOR");
    const char* file = std::getenv("ZX_FLOWSHEET");
    if (!floor || !file) {
        state.SkipWithError("set ZX_FLOOR and ZX_FLOWSHEET (see the comment at the top)");
        return;
    }
    const char* given = std::getenv("ZX_ZOREXP");
    const std::string zorexp =
        given ? given : (std::filesystem::canonical("/proc/self/exe").parent_path() / "zorexp").string();
    std::vector<double> wall[2], cpu[2], rss[2];
    for (auto _ : state) {
        const ProcessCost costs[2] = {RunProcess({zorexp, "solve", file, "--json"}), RunProcess({floor, file})};
        if (costs[0].wall < 0 || costs[1].wall < 0) {
            state.SkipWithError(costs[0].wall < 0 ? "zorexp failed" : "the floor program failed");
            return;
        }
        for (int k = 0; k < 2; ++k) {
            wall[k].push_back(costs[k].wall);
            cpu[k].push_back(costs[k].cpu);
            rss[k].push_back(costs[k].rssMiB);
        }
        state.SetIterationTime(costs[0].wall);
    }
    state.counters["zorexp_cpu_s"] = Median(cpu[0]);
    state.counters["floor_cpu_s"] = Median(cpu[1]);
    state.counters["zorexp_rss_mib"] = Median(rss[0]);
    state.counters["floor_rss_mib"] = Median(rss[1]);
    state.counters["cpu_ratio"] = Median(cpu[0]) / Median(cpu[1]);
    state.counters["wall_ratio"] = Median(wall[0]) / Median(wall[1]);
    state.counters["rss_ratio"] = Median(rss[0]) / Median(rss[1]);
}

BENCHMARK(BM_WholeSolveAgainstFloor)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

BENCHMARK(BM_CoolantFlowsheet)->ArgName("cells")->Arg(1000000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
