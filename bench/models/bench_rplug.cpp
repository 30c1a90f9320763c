// RPLUG_TCOOL1 (a class generated from its model description) at scale (NPTS = 1e4, 1e5, 1e6,
// heating option "TCool-Spec"), driven as the host drives it, through the runtime's protocol
// driver:
//  - BM_Memory: bytes per scalar variable of the model (see MemoryInUse for the method);
//  - BM_SetUp: time per equation of the host's path from `new VX_RPLUG_TCOOL1(true)` through
//    JacPattern, with a linear fit over NPTS;
//  - BM_Evaluate: Residuals + Jacobian time per equation through the driver, and its ratio to a
//    hand-written loop over flat arrays that computes the same numbers, in the same process.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <vector>

#include "models/unitops/rplug_tcool1.hpp"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// The host's path: factory, user values, SetDims, assignments, SetDims over the assigned sets,
// equation numbering and the pattern (the host allocates rows and columns by the counts).
struct Built {
    VX_RPLUG_TCOOL1* model = nullptr;
    VX_ProtocolDriver driver;
    int equations = 0;
    std::vector<int> rows, cols;
    ~Built() { if (model) model->Release(); }
};

void Construct(Built& b, int npts) {
    b.model = new VX_RPLUG_TCOOL1(true);
    b.model->AddRef();
    b.model->NPTS.AssignUser(VX_ATTR_VALUE, VX_Value(npts, 0));
    b.model->CTYPE.AssignUser(VX_ATTR_VALUE, VX_Value("TCool-Spec", 0));
    b.driver.AddBlock(*b.model);
    b.driver.SetDims();
    b.driver.ExecuteAssignments(10, VX_CTX_MODEL);
    b.driver.SetDims();
}

void DeclareAndPattern(Built& b) {
    b.driver.SetUpEquations();
    b.equations = b.driver.Rows();
    b.rows.resize(static_cast<std::size_t>(b.driver.Entries()));
    b.cols.resize(static_cast<std::size_t>(b.driver.Entries()));
    b.driver.JacPattern(b.rows.data(), b.cols.data());
}

int ScalarVariables(int npts) { return 3 * (npts + 1) + 2; }   // T_PROCESS, Q_FLUX, T_COOL_; U, T_COOL

// Memory in use by the process's allocator: bytes handed out from the heap arena (uordblks)
// plus bytes in blocks mapped on their own (hblkhd). The runtime's small-object pool takes its
// 1 MiB chunks from malloc, so they are counted here, partly used chunks in full;
// VX_PoolBytesReserved() tells how much of it is pool. A difference of this sum across the
// construction of a model is what the model costs, as long as no freed pool blocks are reused,
// which is why the models measured are kept alive until all measurements are done.
std::size_t MemoryInUse() {
    const struct mallinfo2 mi = mallinfo2();
    return mi.uordblks + mi.hblkhd;
}

long ResidentBytes() {
    long pages = 0, resident = 0;
    if (FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(f);
    }
    return resident * sysconf(_SC_PAGESIZE);
}

std::vector<Built*>& KeptAlive() {
    static std::vector<Built*> kept;
    return kept;
}

void BM_Memory(benchmark::State& state) {
    const int npts = static_cast<int>(state.range(0));
    const double vars = ScalarVariables(npts);
    double model = 0, withNumbering = 0, pool = 0, resident = 0;
    for (auto _ : state) {
        auto* b = new Built;
        const std::size_t heap0 = MemoryInUse(), pool0 = VX_PoolBytesReserved();
        const long rss0 = ResidentBytes();
        Construct(*b, npts);
        const std::size_t heap1 = MemoryInUse();
        model = static_cast<double>(heap1 - heap0);
        pool = static_cast<double>(VX_PoolBytesReserved() - pool0);
        resident = static_cast<double>(ResidentBytes() - rss0);
        DeclareAndPattern(*b);
        const std::size_t hostArrays = (b->rows.capacity() + b->cols.capacity()) * sizeof(int);
        withNumbering = static_cast<double>(MemoryInUse() - heap0 - hostArrays);
        KeptAlive().push_back(b);
    }
    state.counters["B_per_var"] = model / vars;
    state.counters["B_per_var_setup"] = withNumbering / vars;
    state.counters["pool_B_per_var"] = pool / vars;
    state.counters["rss_B_per_var"] = resident / vars;
    state.counters["sizeof_var"] = sizeof(VX_TEMPERATURE);
}

void BM_ReleaseKept(benchmark::State& state) {
    for (auto _ : state) {
        for (Built* b : KeptAlive()) delete b;
        KeptAlive().clear();
    }
}

void BM_SetUp(benchmark::State& state) {
    const int npts = static_cast<int>(state.range(0));
    // One untimed set-up first: it maps and touches the memory the timed ones reuse, as they reuse
    // each other's, so that every size is timed under the same conditions (with one timed
    // iteration at 1e6, the first touch of every page would otherwise count there alone).
    // Its own time is reported as cold_ns_per_eq.
    const auto cold0 = Clock::now();
    auto* warm = new Built;
    Construct(*warm, npts);
    DeclareAndPattern(*warm);
    const double cold = Seconds(Clock::now() - cold0);
    const long coldEquations = warm->equations;
    delete warm;
    Clock::duration spent{};
    long equations = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        auto* b = new Built;
        Construct(*b, npts);
        DeclareAndPattern(*b);
        spent += Clock::now() - t0;
        equations += b->equations;
        state.PauseTiming();
        delete b;
        state.ResumeTiming();
    }
    state.counters["ns_per_eq"] = 1e9 * Seconds(spent) / static_cast<double>(equations);
    state.counters["cold_ns_per_eq"] = 1e9 * cold / static_cast<double>(coldEquations);
    state.SetComplexityN(npts);
}

// The same numbers as the model's Residuals and Jacobian, from flat arrays.
__attribute__((noinline)) void FlatResiduals(const double* q, const double* tp, double tCool, double u, double* r, int n) {
    for (int i = 0; i < n; ++i) r[i] = q[i] - (tp[i] - tCool) * u;
}
__attribute__((noinline)) void FlatJacobian(const double* tp, double tCool, double u, double* v, int n) {
    for (int i = 0; i < n; ++i) {
        v[4 * i] = 1.0;
        v[4 * i + 1] = -(tp[i] - tCool);
        v[4 * i + 2] = -u;
        v[4 * i + 3] = u;
    }
}

void BM_Evaluate(benchmark::State& state) {
    const int npts = static_cast<int>(state.range(0));
    Built b;
    Construct(b, npts);
    VX_RPLUG_TCOOL1& m = *b.model;
    for (int i = 0; i <= npts; ++i) {
        m.T_PROCESS(i).SetSolverValue(400.0 - 0.1 * i);
        m.Q_FLUX(i).SetSolverValue(0.01 * i);
    }
    m.U.SetSolverValue(0.3);
    m.T_COOL.SetSolverValue(30.0);
    DeclareAndPattern(b);
    const int n = b.equations;
    std::vector<double> q(static_cast<std::size_t>(n)), tp(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        q[static_cast<std::size_t>(i)] = m.Q_FLUX(i).fv();
        tp[static_cast<std::size_t>(i)] = m.T_PROCESS(i).fv();
    }
    std::vector<double> r(static_cast<std::size_t>(n)), v(b.rows.size()), rFlat(r.size()), vFlat(v.size());

    Clock::duration model{}, flat{};
    for (auto _ : state) {
        auto t0 = Clock::now();
        b.driver.Residuals(r.data());
        b.driver.Jacobian(v.data());
        benchmark::ClobberMemory();
        auto t1 = Clock::now();
        FlatResiduals(q.data(), tp.data(), m.T_COOL.fv(), m.U.fv(), rFlat.data(), n);
        FlatJacobian(tp.data(), m.T_COOL.fv(), m.U.fv(), vFlat.data(), n);
        benchmark::ClobberMemory();
        auto t2 = Clock::now();
        model += t1 - t0;
        flat += t2 - t1;
    }
    if (r != rFlat || v != vFlat) state.SkipWithError("the model and the flat loop disagree");
    const double evals = static_cast<double>(state.iterations()) * n;
    state.counters["model_ns_per_eq"] = 1e9 * Seconds(model) / evals;
    state.counters["flat_ns_per_eq"] = 1e9 * Seconds(flat) / evals;
    state.counters["ratio"] = Seconds(model) / Seconds(flat);
}

// Memory first, while the small-object pool holds no freed blocks; its models stay alive
// until BM_ReleaseKept.
BENCHMARK(BM_Memory)->Arg(10000)->Arg(100000)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReleaseKept)->Iterations(1);
BENCHMARK(BM_SetUp)->Arg(1000)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);
BENCHMARK(BM_Evaluate)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
