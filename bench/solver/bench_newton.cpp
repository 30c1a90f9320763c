// Newton on a long coolant chain against a plain Newton loop with KLU doing the
// same work (same system, scaling, tolerance and at most the same iterations),
// measured in the same process so the ratio is meaningful on any machine.
//
// The chain: a pump feeding N pipe segments. Per segment a pressure p_i and a
// temperature T_i; one mass flow m for the whole loop, fixed by the outlet
// pressure. Unknowns [p_0, T_0, ..., p_{N-1}, T_{N-1}, m], equations in the
// same order with the outlet condition last. The flow column couples every
// segment, so the matrix is one large strongly connected block.
#include <benchmark/benchmark.h>
#include <suitesparse/klu.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "solver/newton_solver.hpp"

namespace {

using namespace zx::solve;

class CoolantChain : public SparseSystem {
public:
    explicit CoolantChain(int segments) : n_seg_(segments), k_(2.0e6 / segments) {
        const int n = 2 * n_seg_ + 1;
        p_.n_rows = p_.n_cols = n;
        const int m = n - 1;
        for (int i = 0; i < n_seg_; ++i) {
            const int p = 2 * i, t = 2 * i + 1;
            // pressure equation of segment i: p_i, p_{i-1}, T_i, m (pump: p_0, m)
            p_.add(p, p);
            if (i) {
                p_.add(p, p - 2);
                p_.add(p, t);
            }
            p_.add(p, m);
            // energy equation of segment i: T_i, T_{i-1}, m (inlet: T_0)
            p_.add(t, t);
            if (i) {
                p_.add(t, t - 2);
                p_.add(t, m);
            }
        }
        p_.add(m, 2 * (n_seg_ - 1));  // outlet pressure
    }

    const TripletPattern& pattern() const override { return p_; }

    bool residuals(const double* x, double* r) override {
        const double m = x[2 * n_seg_];
        r[0] = x[0] - p_in_ - head_ + pump_b_ * m * std::fabs(m);
        r[1] = x[1] - t_in_;
        for (int i = 1; i < n_seg_; ++i) {
            const double p = x[2 * i], t = x[2 * i + 1], pp = x[2 * i - 2], tp = x[2 * i - 1];
            r[2 * i] = p - pp + k_ * m * std::fabs(m) / rho(t);
            r[2 * i + 1] = m * cp_ * (t - tp) - ua_ * (t_wall_ - 0.5 * (t + tp));
        }
        r[2 * n_seg_] = x[2 * n_seg_ - 2] - p_out_;
        return true;
    }

    bool jacobian(const double* x, double* v) override {
        const double m = x[2 * n_seg_];
        int k = 0;
        v[k++] = 1.0;                               // pump: p_0
        v[k++] = 2.0 * pump_b_ * std::fabs(m);      // pump: m
        v[k++] = 1.0;                               // inlet: T_0
        for (int i = 1; i < n_seg_; ++i) {
            const double t = x[2 * i + 1], tp = x[2 * i - 1], d = rho(t);
            v[k++] = 1.0;
            v[k++] = -1.0;
            v[k++] = -k_ * m * std::fabs(m) * drho_dt_ / (d * d);
            v[k++] = 2.0 * k_ * std::fabs(m) / d;
            v[k++] = m * cp_ + 0.5 * ua_;
            v[k++] = -m * cp_ + 0.5 * ua_;
            v[k++] = cp_ * (t - tp);
        }
        v[k++] = 1.0;  // outlet
        return true;
    }

    // Pressures at the outlet value, temperatures at the inlet value and the
    // given flow (the solution has about 10 kg/s).
    std::vector<double> start(double flow) const {
        std::vector<double> x(p_.n_cols);
        for (int i = 0; i < n_seg_; ++i) {
            x[2 * i] = p_out_;
            x[2 * i + 1] = t_in_;
        }
        x.back() = flow;
        return x;
    }
    std::vector<double> lower() const { return bounds(0.0, 200.0, 0.0); }
    std::vector<double> upper() const { return bounds(1e7, 1000.0, 100.0); }

private:
    double rho(double t) const { return 1000.0 + drho_dt_ * (t - 300.0); }
    std::vector<double> bounds(double p, double t, double m) const {
        std::vector<double> b(p_.n_cols);
        for (int i = 0; i < n_seg_; ++i) {
            b[2 * i] = p;
            b[2 * i + 1] = t;
        }
        b.back() = m;
        return b;
    }

    TripletPattern p_;
    int n_seg_;
    double k_;  // friction per segment, Pa / (kg/s)^2 * kg/m3
    double p_in_ = 1e5, p_out_ = 1e5, head_ = 3e5, pump_b_ = 1e3;
    double t_in_ = 300.0, t_wall_ = 350.0, cp_ = 4180.0, ua_ = 0.1, drho_dt_ = -0.3;
};

double seconds(std::chrono::steady_clock::time_point t0) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

// The same work written plainly, as the baseline: Newton with KLU on the same system (pattern
// compressed, ordered once, factorised then refactorised), rows scaled by max(1, max |J_ij|),
// the same convergence test and tolerance, full steps clipped to the bounds, and never more
// iterations than the solver took. No line search, no condition estimates, no log.
double plain_newton(CoolantChain& sys, std::vector<double> x, const std::vector<double>& lower,
                    const std::vector<double>& upper, double tolerance, int max_iterations, int& iterations) {
    const auto t0 = std::chrono::steady_clock::now();
    const CscPattern a = CscPattern::from_triplets(sys.pattern());
    const int n = a.n_cols;
    std::vector<double> triplets(a.n_triplets()), values(a.nnz()), r(n), s(n), dx(n);
    klu_common c;
    klu_defaults(&c);
    klu_symbolic* sym = klu_analyze(n, const_cast<int*>(a.col_start.data()), const_cast<int*>(a.row_index.data()), &c);
    klu_numeric* num = nullptr;
    if (!sym) std::abort();
    sys.residuals(x.data(), r.data());
    for (int k = 0;; ++k) {
        sys.jacobian(x.data(), triplets.data());
        a.scatter(triplets.data(), values.data());
        std::fill(s.begin(), s.end(), 1.0);
        for (int e = 0; e < a.nnz(); ++e) s[a.row_index[e]] = std::max(s[a.row_index[e]], std::fabs(values[e]));
        double norm = 0.0;
        for (int i = 0; i < n; ++i) norm = std::max(norm, std::fabs(r[i] / s[i]));
        if (norm <= tolerance || k == max_iterations) {
            iterations = k;
            break;
        }
        int* ap = const_cast<int*>(a.col_start.data());
        int* ai = const_cast<int*>(a.row_index.data());
        const bool factored = num ? klu_refactor(ap, ai, values.data(), sym, num, &c) != 0
                                  : (num = klu_factor(ap, ai, values.data(), sym, &c)) != nullptr;
        for (int i = 0; i < n; ++i) dx[i] = -r[i];
        if (!factored || !klu_solve(sym, num, n, 1, dx.data(), &c)) std::abort();
        for (int i = 0; i < n; ++i) x[i] = std::clamp(x[i] + dx[i], lower[i], upper[i]);
        sys.residuals(x.data(), r.data());
    }
    const double t = seconds(t0);
    klu_free_numeric(&num, &c);
    klu_free_symbolic(&sym, &c);
    return t;
}

void BM_CoolantChainNewton(benchmark::State& state) {
    CoolantChain sys(static_cast<int>(state.range(0)));
    const std::vector<double> x0 = sys.start(static_cast<double>(state.range(1)));
    const std::vector<double> lower = sys.lower(), upper = sys.upper();
    const int n = sys.pattern().n_cols;

    SolverOptions opt;
    opt.verbose_log = false;
    double plain_s = 0, newton_s = 0, analyse_s = 0, factor_s = 0, solve_s = 0;
    int iterations = 0, plain_iterations = 0, fresh = 0, refactors = 0;
    for (auto _ : state) {
        std::vector<double> x = x0;
        const auto t0 = std::chrono::steady_clock::now();
        const SolveResult r = solve(sys, x, lower, upper, opt);
        const double t = seconds(t0);
        if (r.status != SolveStatus::Converged) {
            state.SkipWithError(r.message.c_str());
            break;
        }
        state.SetIterationTime(t);
        newton_s += t;
        analyse_s += r.analyse_seconds;
        factor_s += r.factor_seconds;
        solve_s += r.solve_seconds;
        iterations = r.iterations;
        fresh = r.fresh_factorizations;
        refactors = r.refactorizations;
        plain_s += plain_newton(sys, x0, lower, upper, opt.tolerance, r.iterations, plain_iterations);
    }
    using C = benchmark::Counter;
    state.counters["unknowns"] = n;
    state.counters["newton_s"] = C(newton_s, C::kAvgIterations);
    state.counters["plain_s"] = C(plain_s, C::kAvgIterations);
    state.counters["ratio"] = plain_s > 0 ? newton_s / plain_s : 0.0;
    // Where the line search takes more (shorter) steps than the plain loop's full ones, the
    // equal work is one iteration: time per iteration against time per iteration.
    state.counters["ratio_per_iteration"] = plain_s > 0 && iterations > 0 && plain_iterations > 0
                                                ? (newton_s / iterations) / (plain_s / plain_iterations)
                                                : 0.0;
    state.counters["analyse_s"] = C(analyse_s, C::kAvgIterations);
    state.counters["factor_s"] = C(factor_s, C::kAvgIterations);
    state.counters["lsolve_s"] = C(solve_s, C::kAvgIterations);
    state.counters["iterations"] = iterations;
    state.counters["plain_iterations"] = plain_iterations;
    state.counters["fresh_lu"] = fresh;
    state.counters["refactor"] = refactors;
}

// Arguments: segments (unknowns = 2 * segments + 1), starting flow in kg/s.
// A start at 1 kg/s needs damped steps; one at 10 kg/s is nearly converged.
BENCHMARK(BM_CoolantChainNewton)
    ->ArgNames({"segments", "flow0"})
    ->Args({50000, 1})
    ->Args({500000, 1})
    ->Args({500000, 10})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
