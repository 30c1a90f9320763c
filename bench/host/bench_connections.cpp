// What connecting costs: a chain of N MATERIALSTREAMs of 20 components joined end to end (the
// first one's inlet open, so its copies are the feed), set up and solved, against one
// unconnected RPLUG_TCOOL with the same number of equations, set up and solved in the same
// process. Set-up is the flowsheet's construction (blocks, connections, rounds of SetDims and
// ExecuteAssignments) and gathering the equations (SetUpEquations, JacPattern); solve is the
// analysis and the Newton solve.
#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <vector>

#include "flowsheet/equation_system.hpp"
#include "flowsheet/flowsheet.hpp"
#include "flowsheet/json_document.hpp"
#include "flowsheet/steady_state_solve.hpp"
#include "flowsheet/structure_diagnosis.hpp"
#include "models/streams/materialstream.hpp"
#include "models/unitops/rplug_tcool.hpp"

namespace {

using namespace zx::flowsheet;
using Clock = std::chrono::steady_clock;

constexpr int kComponents = 20;

double SecondsSince(Clock::time_point t0) { return std::chrono::duration<double>(Clock::now() - t0).count(); }

VX_Type* Create(const std::string& type, std::string& error) {
    VX_Type* made = nullptr;
    if (type == "MATERIALSTREAM") made = new VX_MATERIALSTREAM(true);
    else if (type == "RPLUG_TCOOL") made = new VX_RPLUG_TCOOL(true);
    else error = "the benchmark makes MATERIALSTREAM and RPLUG_TCOOL only";
    if (made) made->AddRef();
    return made;
}

ComponentListSpec Components() {
    ComponentListSpec list;
    list.name = "feed";
    list.pointer = "/components/feed";
    for (int c = 1; c <= kComponents; ++c) list.components.push_back("C" + std::to_string(c));
    return list;
}

void Set(BlockSpec& b, const std::string& path, Json value) {
    SetEntry e;
    e.path = path;
    e.value = InputValue::Parse(value.dump());
    e.pointer = b.pointer + "/set/" + path;
    b.sets.push_back(std::move(e));
}

FlowsheetDocument Chain(int streams) {
    FlowsheetDocument doc;
    doc.componentLists.push_back(Components());
    doc.blocks.reserve(static_cast<std::size_t>(streams));
    for (int k = 0; k < streams; ++k) {
        const std::string name = "S" + std::to_string(k);
        BlockSpec block;
        block.name = name;
        block.type = "MATERIALSTREAM";
        block.pointer = "/blocks/" + name;
        doc.blocks.push_back(std::move(block));
        if (k > 0) {
            ConnectionSpec c;
            c.from = "S" + std::to_string(k - 1) + ".OUT_F";
            c.to = name + ".IN_F";
            c.pointer = "/connections/" + std::to_string(k - 1);
            doc.connections.push_back(std::move(c));
        }
    }
    BlockSpec& feed = doc.blocks.front();
    Set(feed, "F", 100.0);
    Set(feed, "T", 50.0);
    Set(feed, "P", 2.0);
    Set(feed, "H", 0.1);
    return doc;
}

// The equations of a chain: each stream two per carried variable, each connection one per
// matched variable (the 6 scalars and the composition of a material port).
int ChainEquations(int streams) { return 2 * (6 + kComponents) * streams + (6 + kComponents) * (streams - 1); }

// One RPLUG_TCOOL of `equations` equations (DX and a duty per cell): temperatures and geometry
// fixed, as in bench_flowsheet.
FlowsheetDocument Block(int equations) {
    const int cells = equations - 1;
    FlowsheetDocument doc;
    doc.componentLists.push_back(Components());
    BlockSpec b;
    b.name = "R1";
    b.type = "RPLUG_TCOOL";
    b.pointer = "/blocks/R1";
    Json temperatures = Json::array();
    for (int i = 1; i <= cells; ++i) temperatures.push_back(300.0 + 100.0 * (1.0 - static_cast<double>(i) / cells));
    Set(b, "NPTS", cells);
    Set(b, "T_CELL0", Json{{"value", 400.0}, {"spec", "Fixed"}});
    Set(b, "T_CELL", Json{{"value", std::move(temperatures)}, {"spec", "Fixed"}});
    Set(b, "U", 0.25);
    Set(b, "T_COOL", 280.0);
    Set(b, "DIAM", Json{{"value", 0.05}, {"spec", "Fixed"}});
    Set(b, "NTUBE", Json{{"value", 500.0}, {"spec", "Fixed"}});
    Set(b, "L", Json{{"value", 12.0}, {"spec", "Fixed"}});
    doc.blocks.push_back(std::move(b));
    return doc;
}

struct Timing {
    double setUp = 0, solve = 0;
    int rows = 0;
};

// Set-up and solve of one flowsheet; false (with the state skipped) when it does not solve.
bool Run(benchmark::State& state, const FlowsheetDocument& doc, Timing& t) {
    auto t0 = Clock::now();
    std::unique_ptr<Flowsheet> sheet = Flowsheet::Build(doc, Create);
    auto equations = std::make_unique<EquationSystem>(*sheet);
    t.setUp += SecondsSince(t0);
    t.rows = equations->Rows();
    t0 = Clock::now();
    if (!DiagnoseStructure(*equations).Solvable()) {
        state.SkipWithError("not square");
        return false;
    }
    zx::solve::SolverOptions options;
    options.verbose_log = false;
    const zx::solve::SolveResult result = SolveSteadyState(*equations, options, nullptr);
    t.solve += SecondsSince(t0);
    if (result.status != zx::solve::SolveStatus::Converged) {
        state.SkipWithError(result.message.c_str());
        return false;
    }
    return true;
}

void BM_StreamChain(benchmark::State& state) {
    const int streams = static_cast<int>(state.range(0));
    const FlowsheetDocument chain = Chain(streams), block = Block(ChainEquations(streams));
    Timing connected, alone;
    for (auto _ : state) {
        const double before = connected.setUp + connected.solve;
        if (!Run(state, chain, connected) || !Run(state, block, alone)) break;
        state.SetIterationTime(connected.setUp + connected.solve - before);
    }
    if (connected.rows != alone.rows) state.SkipWithError("the chain and the block differ in size");
    using C = benchmark::Counter;
    const double n = static_cast<double>(state.iterations());
    state.counters["equations"] = connected.rows;
    state.counters["setup_s"] = C(connected.setUp, C::kAvgIterations);
    state.counters["solve_s"] = C(connected.solve, C::kAvgIterations);
    state.counters["block_setup_s"] = C(alone.setUp, C::kAvgIterations);
    state.counters["block_solve_s"] = C(alone.solve, C::kAvgIterations);
    state.counters["setup_ns_per_eq"] = connected.setUp / n / connected.rows * 1e9;
    state.counters["setup_ratio"] = alone.setUp > 0 ? connected.setUp / alone.setUp : 0.0;
    state.counters["solve_ratio"] = alone.solve > 0 ? connected.solve / alone.solve : 0.0;
    state.counters["ratio"] = alone.setUp + alone.solve > 0 ? (connected.setUp + connected.solve) / (alone.setUp + alone.solve) : 0.0;
}

BENCHMARK(BM_StreamChain)->ArgName("streams")->Arg(1000)->Arg(3000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
