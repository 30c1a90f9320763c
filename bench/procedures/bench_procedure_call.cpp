// Procedure calls of a routine with a 50-component vector input and analytic derivatives
// (ZXB_mixture, a mixture property computed as property routines do: one logarithm and a
// quadratic per component):
//  - BM_BoundCall: one bound call, i.e. a new input set packed and compared, the external call,
//    the derivatives taken over, the residual row and the Jacobian row, as a ratio to calling
//    the routine directly on a buffer already packed, measured in the same process;
//  - BM_NewtonSolve: a whole Newton solve for the temperature at which the mixture property
//    reaches a target, counting routine calls per distinct input set (the goal is exactly 1).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

#include "call_model.hpp"
#include "procedures/procedure_template.hpp"
#include "solver/newton_solver.hpp"
#include "zorexp/routine_library.h"
#include "zorexp/routine_loader.hpp"

VX_DECLARE_PROCEDURE(ZXB_MIXTURE, "ZxBenchRoutines", "ZXB_mixture", 2, F, "R*, R[1]* -> R", yes, no)

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kComponents = 50;

double Seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

double Median(std::vector<double> v) {
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
    return v[v.size() / 2];
}

template <class F>
F* Entry(const char* name) {
    setenv(VX_ROUTINE_PATH_VARIABLE, ZX_BENCH_ROUTINE_DIR, 1);
    return reinterpret_cast<F*>(VX_FindRoutine("ZxBenchRoutines", 0, name).entry);
}

const VX_Value kFixed(VX_SPEC_FIXED, VX_CTX_USER, 0, 0);

double MoleFraction(int i) { return (i + 1) / (0.5 * kComponents * (kComponents + 1)); }

// A model with the call  call (H) = ZXB_MIXTURE(T, X)  in a session of its own; X and H fixed,
// T, and the model's own A and B, free.
class MixtureModel {
public:
    MixtureModel() : m_previous(VX_Session::MakeCurrent(&m_session)), T(true), H(true) {
        setenv(VX_ROUTINE_PATH_VARIABLE, ZX_BENCH_ROUTINE_DIR, 1);
        model = std::make_unique<CallModel>();
        for (int i = 0; i < kComponents; ++i) {
            X.emplace_back(new VX_REALVARIABLE(true));
            X.back()->SetSolverValue(MoleFraction(i));
            X.back()->SPEC().Assign(&kFixed);
        }
        H.SPEC().Assign(&kFixed);
        T.SetSolverValue(350.0);
        model->calls.push_back([this](bool counting) {
            auto* p = new VXProc_ZXB_MIXTURE(counting, 0);
            p->Argument(T);
            p->Argument();
            p->SetDimensionSize(kComponents);
            for (auto& x : X) p->Element(*x);
            p->Argument(H);
            return p;
        });
        m_session.ResetNumbering();
        VX_ModelType::m_stLastGroup = 0;
        equations = model->SetUpEquations();
        int eq = 0, nz = 0;
        model->CountEqnsAndNZs(eq, nz);
        rows.resize(static_cast<std::size_t>(nz));
        cols.resize(static_cast<std::size_t>(nz));
        int* r = rows.data();
        int* c = cols.data();
        model->JacPattern(r, c, nullptr);
    }
    ~MixtureModel() {
        model.reset();
        VX_Session::MakeCurrent(m_previous);
    }
    VX_ProcedureType& Procedure() { return *model->ProcedureEquation(model->CallGroup(), 0); }
    VX_Session& Session() { return m_session; }

private:
    VX_Session m_session;
    VX_Session* m_previous;

public:
    std::unique_ptr<CallModel> model;
    VX_REALVARIABLE T, H;
    std::vector<std::unique_ptr<VX_REALVARIABLE>> X;
    int equations = 0;
    std::vector<int> rows, cols;
};

// The routine called directly: its own buffer, packed once, only T changed per call.
struct DirectCall {
    zorexp_dense_routine* routine = Entry<zorexp_dense_routine>("ZXB_mixture");
    std::vector<double> buffer = std::vector<double>(kComponents + 2), work = std::vector<double>(kComponents + 1),
                        derivatives = std::vector<double>(kComponents + 1);
    int dims[1] = {kComponents};
    int offsets[3] = {1, 2, kComponents + 2};
    int status = 1, list = 0, workLength = kComponents + 1, outputs = 1, inputs = kComponents + 1, callType = ZOREXP_CALL_DERIVATIVES;

    DirectCall() {
        for (int i = 0; i < kComponents; ++i) buffer[static_cast<std::size_t>(1 + i)] = MoleFraction(i);
    }
    double operator()(double t) {
        buffer[0] = t;
        status = 1;
        routine(buffer.data(), dims, buffer.data(), dims, offsets, offsets + 2, &status, &list, work.data(), &workLength,
                derivatives.data(), &outputs, &inputs, &callType);
        return buffer[kComponents + 1];
    }
};

void BM_BoundCall(benchmark::State& state) {
    MixtureModel m;
    DirectCall direct;
    VX_ProcedureType& proc = m.Procedure();
    auto* calls = Entry<int()>("zxb_calls");
    Entry<void(int)>("zxb_track")(0);
    std::vector<double> r(1), j(static_cast<std::size_t>(kComponents + 2));
    constexpr int kBlock = 64;   // calls per clock reading
    // Block times of both, side by side; their medians make the ratio, so that a block slowed by
    // another process on the machine does not weigh on one side only.
    std::vector<double> bound, baseline;
    double t = 300.0, sink = 0.0;
    for (auto _ : state) {
        const double t0 = t;
        const auto c0 = Clock::now();
        for (int k = 0; k < kBlock; ++k) {
            m.T.SetSolverValue(t0 + 1e-3 * k);
            int at = 0;
            proc.Residuals(r.data(), at);
            at = 0;
            proc.Jacobian(j.data(), at);
        }
        benchmark::ClobberMemory();
        const auto c1 = Clock::now();
        for (int k = 0; k < kBlock; ++k) sink += direct(t0 + 1e-3 * k);
        benchmark::ClobberMemory();
        const auto c2 = Clock::now();
        bound.push_back(Seconds(c1 - c0) / kBlock);
        baseline.push_back(Seconds(c2 - c1) / kBlock);
        t += 0.1;
    }
    benchmark::DoNotOptimize(sink);
    // The bound call's Jacobian row against the direct call's derivatives, at the last point.
    direct(m.T.fv());
    if (j[1] != -direct.derivatives[0] || r[0] != m.H.fv() - direct.buffer[kComponents + 1])
        state.SkipWithError("the bound call and the direct call disagree");
    // External calls per bound call with a new input set, counted apart from the timing.
    const int before = calls();
    for (int k = 0; k < 100; ++k) {
        m.T.SetSolverValue(t + k);
        int at = 0;
        proc.Residuals(r.data(), at);
        at = 0;
        proc.Jacobian(j.data(), at);
    }
    state.counters["calls_per_bound_call"] = (calls() - before) / 100.0;
    const double boundSeconds = Median(bound), directSeconds = Median(baseline);
    state.counters["bound_ns"] = 1e9 * boundSeconds;
    state.counters["direct_ns"] = 1e9 * directSeconds;
    state.counters["ratio"] = boundSeconds / directSeconds;
}

// The model as a square system over its free variables, for the Newton solver.
class ModelSystem : public zx::solve::SparseSystem {
public:
    explicit ModelSystem(MixtureModel& m) : m_model(m), m_all(m.rows.size()) {
        const auto& columns = m.Session().Columns();
        std::vector<int> unknown(columns.size(), -1);
        for (std::size_t c = 0; c < columns.size(); ++c)
            if (auto* v = dynamic_cast<VX_Variable*>(columns[c]); v && v->CurrSpec() == VX_SPEC_FREE) {
                unknown[c] = static_cast<int>(m_unknowns.size());
                m_unknowns.push_back(v);
            }
        m_pattern.n_rows = m.equations;
        m_pattern.n_cols = static_cast<int>(m_unknowns.size());
        for (std::size_t k = 0; k < m.rows.size(); ++k)
            if (const int u = unknown[static_cast<std::size_t>(m.cols[k])]; u >= 0) {
                m_pattern.add(m.rows[k], u);
                m_kept.push_back(k);
            }
    }
    const zx::solve::TripletPattern& pattern() const override { return m_pattern; }
    bool residuals(const double* x, double* r) override {
        Place(x);
        return m_model.model->Residuals(r, 0, 0) >= 0;
    }
    bool jacobian(const double* x, double* values) override {
        Place(x);
        if (m_model.model->Jacobian(m_all.data(), 0, 0) < 0) return false;
        for (std::size_t t = 0; t < m_kept.size(); ++t) values[t] = m_all[m_kept[t]];
        return true;
    }
    std::vector<double> Start() const {
        std::vector<double> x;
        for (VX_Variable* v : m_unknowns) x.push_back(v->fv());
        return x;
    }

private:
    void Place(const double* x) {
        for (std::size_t u = 0; u < m_unknowns.size(); ++u) m_unknowns[u]->SetSolverValue(x[u]);
    }
    MixtureModel& m_model;
    std::vector<double> m_all;
    std::vector<VX_Variable*> m_unknowns;
    std::vector<std::size_t> m_kept;
    zx::solve::TripletPattern m_pattern;
};

void BM_NewtonSolve(benchmark::State& state) {
    MixtureModel m;
    DirectCall direct;
    m.H.SetSolverValue(direct(400.0));   // the target: the property at 400
    ModelSystem system(m);
    auto* calls = Entry<int()>("zxb_calls");
    auto* distinct = Entry<int()>("zxb_distinct_temperatures");
    auto* reset = Entry<void()>("zxb_reset");
    Entry<void(int)>("zxb_track")(1);
    const std::vector<double> lower(3, -1e30), upper(3, 1e30);
    zx::solve::SolverOptions options;
    options.verbose_log = false;
    double worst = 0.0, iterations = 0.0, evaluations = 0.0;
    for (auto _ : state) {
        m.T.SetSolverValue(300.0);
        m.model->A.SetSolverValue(0.0);
        m.model->B.SetSolverValue(0.0);
        std::vector<double> x = system.Start();
        reset();
        const auto result = zx::solve::solve(system, x, lower, upper, options);
        if (result.status != zx::solve::SolveStatus::Converged || std::fabs(m.T.fv() - 400.0) > 1e-6)
            state.SkipWithError("the Newton solve did not find T = 400");
        worst = std::max(worst, static_cast<double>(calls()) / distinct());
        iterations = result.iterations;
        evaluations = result.residual_evaluations + result.jacobian_evaluations;
    }
    state.counters["calls_per_distinct_input"] = worst;
    state.counters["newton_iterations"] = iterations;
    state.counters["evaluations"] = evaluations;
}

BENCHMARK(BM_BoundCall)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_NewtonSolve)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
