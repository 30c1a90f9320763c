#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "solver/bounded_step.hpp"
#include "solver/largest_residuals.hpp"
#include "solver/newton_solver.hpp"

using namespace zx::solve;
using Status = SolveResult::Status;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();

// A system given by two functions; remembers every point it is evaluated at.
class FnSystem : public SparseSystem {
public:
    using Fn = std::function<void(const double*, double*)>;
    FnSystem(TripletPattern p, Fn r, Fn j) : p_(std::move(p)), r_(std::move(r)), j_(std::move(j)) {}
    const TripletPattern& pattern() const override { return p_; }
    bool residuals(const double* x, double* r) override {
        seen.emplace_back(x, x + p_.n_cols);
        r_(x, r);
        return true;
    }
    bool jacobian(const double* x, double* v) override { j_(x, v); return true; }
    std::vector<std::vector<double>> seen;

private:
    TripletPattern p_;
    Fn r_, j_;
};

FnSystem scalar(std::function<double(double)> f, std::function<double(double)> df) {
    return FnSystem({1, 1, {0}, {0}}, [f](const double* x, double* r) { r[0] = f(x[0]); },
                    [df](const double* x, double* v) { v[0] = df(x[0]); });
}

// x^2 + y^2 = 4, x = y.
FnSystem circle_and_line() {
    return FnSystem({2, 2, {0, 0, 1, 1}, {0, 1, 0, 1}},
                    [](const double* x, double* r) { r[0] = x[0] * x[0] + x[1] * x[1] - 4, r[1] = x[0] - x[1]; },
                    [](const double* x, double* v) { v[0] = 2 * x[0], v[1] = 2 * x[1], v[2] = 1, v[3] = -1; });
}

SolveResult run(SparseSystem& s, std::vector<double>& x, double lo = -inf, double hi = inf,
                SolverOptions o = {}) {
    const std::vector<double> lower(x.size(), lo), upper(x.size(), hi);
    return solve(s, x, lower, upper, o);
}

}  // namespace

TEST(NewtonSolver, ConvergesQuadraticallyAndLogsEveryIteration) {
    FnSystem s = circle_and_line();
    std::vector<double> x{1.0, 0.5};
    int calls = 0;
    const SolveResult r = solve(s, x, {-inf, -inf}, {inf, inf}, {}, [&](const IterationRecord& rec) {
        EXPECT_EQ(rec.iteration, calls++);
    });
    ASSERT_EQ(r.status, Status::Converged) << r.message;
    EXPECT_NEAR(x[0], std::sqrt(2.0), 1e-9);
    EXPECT_NEAR(x[1], std::sqrt(2.0), 1e-9);
    EXPECT_LE(r.iterations, 6);
    ASSERT_EQ(static_cast<int>(r.log.size()), r.iterations + 1);
    EXPECT_EQ(calls, r.iterations + 1);
    for (std::size_t k = 1; k < r.log.size(); ++k) EXPECT_LT(r.log[k].residual_norm, r.log[k - 1].residual_norm);
    EXPECT_EQ(r.log.back().damping, 1.0);
    EXPECT_TRUE(r.largest_residuals.empty());
    EXPECT_EQ(r.fresh_factorizations + r.refactorizations, r.iterations);

    SolverOptions quiet;  // the callback still sees what the log no longer keeps
    quiet.verbose_log = false;
    x = {1.0, 0.5};
    EXPECT_TRUE(solve(s, x, {-inf, -inf}, {inf, inf}, quiet, [&](const IterationRecord&) { ++calls; }).log.empty());
    EXPECT_EQ(calls, 2 * (r.iterations + 1));
}

TEST(NewtonSolver, RepeatedTripletsAreSummedIntoTheJacobian) {
    // 2x0 + 3x0 + x1 = 6, x0 - x1 = 0: one exact Newton step only if the two
    // entries for (0, 0) add up.
    FnSystem s({2, 2, {0, 1, 0, 0, 1}, {0, 0, 0, 1, 1}},
               [](const double* x, double* r) { r[0] = 5 * x[0] + x[1] - 6, r[1] = x[0] - x[1]; },
               [](const double*, double* v) { v[0] = 2, v[1] = 1, v[2] = 3, v[3] = 1, v[4] = -1; });
    std::vector<double> x{10.0, -3.0};
    const SolveResult r = run(s, x);
    ASSERT_EQ(r.status, Status::Converged) << r.message;
    EXPECT_EQ(r.iterations, 1);
    EXPECT_NEAR(x[0], 1.0, 1e-12);
    EXPECT_NEAR(x[1], 1.0, 1e-12);
}

TEST(NewtonSolver, StepsStayInsideBounds) {
    // From 0.1 the full Newton step for x^2 = 4 lands at 20, past the bound 10.
    FnSystem s = scalar([](double x) { return x * x - 4; }, [](double x) { return 2 * x; });
    std::vector<double> x{0.1};
    SolveResult r = run(s, x, 0.0, 10.0);
    ASSERT_EQ(r.status, Status::Converged) << r.message;
    EXPECT_NEAR(x[0], 2.0, 1e-9);
    EXPECT_LT(r.log[1].damping, 1.0);
    for (const auto& p : s.seen) EXPECT_TRUE(p[0] >= 0.0 && p[0] <= 10.0) << p[0];

    // A start outside the box is moved onto it first.
    x = {50.0};
    s.seen.clear();
    EXPECT_EQ(run(s, x, 0.0, 10.0).status, Status::Converged);
    EXPECT_EQ(s.seen.front()[0], 10.0);

    // The root lies on the bound; the unbounded step would cross it every time.
    FnSystem edge = scalar([](double x) { return std::log1p(x); }, [](double x) { return 1 / (1 + x); });
    x = {2.0};
    r = run(edge, x, 0.0, 10.0);
    ASSERT_EQ(r.status, Status::Converged) << r.message;
    EXPECT_GE(x[0], 0.0);
    EXPECT_LT(x[0], 1e-8);
    for (const auto& p : edge.seen) EXPECT_GE(p[0], 0.0);
}

TEST(NewtonSolver, LineSearchDampsOvershootAndBacktracksFromUndefinedPoints) {
    // Undamped Newton on atan diverges from |x| > 1.39.
    FnSystem a = scalar([](double x) { return std::atan(x); }, [](double x) { return 1 / (1 + x * x); });
    std::vector<double> x{3.0};
    SolveResult r = run(a, x);
    ASSERT_EQ(r.status, Status::Converged) << r.message;
    EXPECT_NEAR(x[0], 0.0, 1e-8);
    EXPECT_LT(r.log[1].damping, 1.0);

    // The full step from 3 for log(x) = 0 lands at -0.3, where log is NaN.
    FnSystem l = scalar([](double x) { return std::log(x); }, [](double x) { return 1 / x; });
    x = {3.0};
    r = run(l, x);
    ASSERT_EQ(r.status, Status::Converged) << r.message;
    EXPECT_NEAR(x[0], 1.0, 1e-8);
    EXPECT_GT(r.residual_evaluations, r.iterations + 1);
}

TEST(NewtonSolver, ReportsWhenTheBoundsBlockAllProgress) {
    // x^2 + 1 = 0 has no root; Newton keeps heading for x = 0, below the bound 1.
    FnSystem s = scalar([](double x) { return x * x + 1; }, [](double x) { return 2 * x; });
    std::vector<double> x{2.0};
    const SolveResult r = run(s, x, 1.0, 5.0);
    EXPECT_EQ(r.status, Status::LineSearchFailed);
    EXPECT_NE(r.message.find("limited by a bound of unknown 0"), std::string::npos) << r.message;
    EXPECT_GE(x[0], 1.0);
    ASSERT_EQ(r.largest_residuals.size(), 1u);
    EXPECT_NEAR(r.largest_residuals[0].second, x[0] * x[0] + 1, 1e-12);
}

TEST(NewtonSolver, SingularSystemsNameTheirEquationsAndUnknowns) {
    // e0: x0 = 1, e1: x0^2 = 1 (over-determined); e2: x1 + x2 = 3 (under-determined).
    FnSystem st({3, 3, {0, 1, 2, 2}, {0, 0, 1, 2}},
                [](const double* x, double* r) { r[0] = x[0] - 1, r[1] = x[0] * x[0] - 1, r[2] = x[1] + x[2] - 3; },
                [](const double* x, double* v) { v[0] = 1, v[1] = 2 * x[0], v[2] = v[3] = 1; });
    std::vector<double> x{0, 0, 0};
    SolveResult r = run(st, x);
    EXPECT_EQ(r.status, Status::StructurallySingular);
    EXPECT_EQ(r.structure.overdetermined_rows, (std::vector<int>{0, 1}));
    EXPECT_EQ(r.structure.underdetermined_cols, (std::vector<int>{1, 2}));
    EXPECT_NE(r.message.find("Over-determined"), std::string::npos) << r.message;

    // Numerically singular: the second equation is 3 times the first.
    FnSystem num({2, 2, {0, 0, 1, 1}, {0, 1, 0, 1}},
                 [](const double* x, double* r) { r[0] = x[0] + x[1] - 2, r[1] = 3 * x[0] + 3 * x[1] - 9; },
                 [](const double*, double* v) { v[0] = v[1] = 1, v[2] = v[3] = 3; });
    x = {0, 0};
    r = run(num, x);
    EXPECT_EQ(r.status, Status::SingularJacobian) << r.message;
    // Ranked by scaled size (-9/3 before -2/1), reported unscaled.
    EXPECT_EQ(r.largest_residuals, (std::vector<std::pair<int, double>>{{1, -9.0}, {0, -2.0}}));
    EXPECT_NE(r.message.find("largest residuals: equation 1 = -9, equation 0 = -2"), std::string::npos)
        << r.message;

    // Non-square: rejected before anything is touched, with the explanation.
    FnSystem wide({2, 3, {0, 1, 1}, {0, 1, 2}}, [](const double*, double*) {}, [](const double*, double*) {});
    x = {7, 8, 9};
    r = run(wide, x);
    EXPECT_EQ(r.status, Status::InvalidInput);
    EXPECT_EQ(r.structure.underdetermined_cols, (std::vector<int>{1, 2}));
    EXPECT_NE(r.message.find("2 equations in 3 unknowns"), std::string::npos) << r.message;
    EXPECT_EQ(x, (std::vector<double>{7, 8, 9}));
}

TEST(NewtonSolver, RejectsBadInputWithoutTouchingX) {
    FnSystem s = circle_and_line();
    std::vector<double> x{5.0, 5.0};
    SolveResult r = solve(s, x, {0.0, 3.0}, {1.0, 2.0}, {});
    EXPECT_EQ(r.status, Status::InvalidInput);
    EXPECT_NE(r.message.find("unknown 1 has lower bound 3 and upper bound 2"), std::string::npos) << r.message;
    SolverOptions o;
    o.boundary_fraction = 1.5;
    r = solve(s, x, {0.0, 0.0}, {1.0, 1.0}, o);
    EXPECT_NE(r.message.find("boundary_fraction = 1.5"), std::string::npos) << r.message;
    EXPECT_EQ(x, (std::vector<double>{5.0, 5.0}));
    EXPECT_TRUE(s.seen.empty());
}

TEST(NewtonSolver, IterationLimitsAndNonFiniteValues) {
    FnSystem s = circle_and_line();
    std::vector<double> x{1.0, 0.5};
    SolverOptions o;
    o.max_iterations = 1;
    SolveResult r = run(s, x, -inf, inf, o);
    EXPECT_EQ(r.status, Status::MaxIterations);
    EXPECT_EQ(r.iterations, 1);
    EXPECT_EQ(r.log.size(), 2u);
    EXPECT_EQ(r.largest_residuals.size(), 2u);

    o.max_iterations = 0;  // already solved: no step needed
    x = {std::sqrt(2.0), std::sqrt(2.0)};
    r = run(s, x, -inf, inf, o);
    EXPECT_EQ(r.status, Status::Converged);
    EXPECT_EQ(r.iterations, 0);

    FnSystem l = scalar([](double x) { return std::log(x); }, [](double x) { return 1 / x; });
    x = {-1.0};
    r = run(l, x);
    EXPECT_EQ(r.status, Status::NonFiniteResidual);
    EXPECT_NE(r.message.find("equation 0 gives nan at the starting point"), std::string::npos) << r.message;
    EXPECT_FALSE(std::isfinite(r.residual_norm));   // never a norm of 0 for a residual that is not a number

    FnSystem q = scalar([](double x) { return std::sqrt(x) - 1; }, [](double x) { return 0.5 / std::sqrt(x); });
    x = {0.0};
    r = run(q, x, 0.0, inf);
    EXPECT_EQ(r.status, Status::NonFiniteJacobian);
    EXPECT_NE(r.message.find("(equation 0, unknown 0) is inf"), std::string::npos) << r.message;
}

TEST(NewtonSolver, LargeTridiagonalSystemConvergesWithRefactorisation) {
    // Discretised u'' + e^u = 0 on (0, 1), u(0) = u(1) = 0; max u = 0.140539.
    const int n = 100000;
    const double h2 = 1.0 / ((n + 1.0) * (n + 1.0));
    TripletPattern p{n, n, {}, {}};
    for (int i = 0; i < n; ++i) {
        for (int j = std::max(0, i - 1); j <= std::min(n - 1, i + 1); ++j) p.add(i, j);
    }
    FnSystem s(
        p,
        [n, h2](const double* x, double* r) {
            for (int i = 0; i < n; ++i) {
                r[i] = (i ? x[i - 1] : 0.0) - 2 * x[i] + (i + 1 < n ? x[i + 1] : 0.0) + h2 * std::exp(x[i]);
            }
        },
        [n, h2](const double* x, double* v) {
            for (int i = 0, k = 0; i < n; ++i) {
                if (i) v[k++] = 1.0;
                v[k++] = -2.0 + h2 * std::exp(x[i]);
                if (i + 1 < n) v[k++] = 1.0;
            }
        });
    std::vector<double> x(n, 0.0);
    SolverOptions o;
    o.tolerance = 1e-13;
    const SolveResult r = run(s, x, 0.0, 1.0, o);
    ASSERT_EQ(r.status, Status::Converged) << r.message;
    EXPECT_NEAR(x[n / 2], 0.140539, 1e-5);
    EXPECT_EQ(r.fresh_factorizations, 1);
    EXPECT_GE(r.refactorizations, 1);
}

TEST(LargestResiduals, NonFiniteFirstThenByMagnitudeThenIndex) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double r[] = {1.0, -5.0, nan, 5.0, 0.0, -inf};
    const auto top = largest_residuals(r, 6, 4);
    ASSERT_EQ(top.size(), 4u);
    EXPECT_EQ(top[0].first, 2);
    EXPECT_EQ(top[1].first, 5);
    EXPECT_EQ(top[2], (std::pair<int, double>{1, -5.0}));
    EXPECT_EQ(top[3], (std::pair<int, double>{3, 5.0}));
    EXPECT_EQ(largest_residuals(r, 6, 99).size(), 6u);
    EXPECT_TRUE(largest_residuals(r, 6, 0).empty());
    EXPECT_TRUE(largest_residuals(r, 0, 3).empty());
}

TEST(BoundedStep, DropsOutwardComponentsAtBoundsAndIgnoresInfiniteBounds) {
    const double lo[] = {0.0, -inf, -1.0}, hi[] = {1.0, inf, 1.0}, x[] = {0.0, 5.0, 0.5};
    double p[] = {-1.0, -1e9, 1.0};
    EXPECT_EQ(freeze_at_bounds(x, p, lo, hi, 3), 1);
    const StepLimit lim = limit_step(x, p, lo, hi, 3, 0.995);
    EXPECT_EQ(lim.limiting_index, 2);
    EXPECT_DOUBLE_EQ(lim.fraction, 0.995 * 0.5);
}

namespace {
// The same functions, with the Jacobian written straight into the compressed slots; its pattern
// repeats an entry (row 0, column 0 twice), whose values are to be summed.
class CompressedSystem : public SparseSystem {
public:
    CompressedSystem(TripletPattern p, FnSystem::Fn r, FnSystem::Fn j)
        : p_(std::move(p)), csc_(CscPattern::from_triplets(p_)), r_(std::move(r)), j_(std::move(j)),
          triplets_(p_.rows.size()) {}
    const TripletPattern& pattern() const override { return p_; }
    const CscPattern* compressed_pattern() const override { return &csc_; }
    bool residuals(const double* x, double* r) override { r_(x, r); return true; }
    bool jacobian(const double*, double*) override { ADD_FAILURE() << "triplet values asked for"; return false; }
    bool writes_compressed() const override { return true; }
    bool jacobian_compressed(const double* x, double* v) override {
        j_(x, triplets_.data());
        csc_.scatter(triplets_.data(), v);
        return true;
    }

private:
    TripletPattern p_;
    CscPattern csc_;
    FnSystem::Fn r_, j_;
    std::vector<double> triplets_;
};

// x^2 + y^2 = 4 (its d/dx written as x + x), x = y.
CompressedSystem compressed_circle(double (*dfdx_half)(double)) {
    return CompressedSystem({2, 2, {0, 0, 0, 1, 1}, {0, 1, 0, 0, 1}},
                            [](const double* x, double* r) { r[0] = x[0] * x[0] + x[1] * x[1] - 4, r[1] = x[0] - x[1]; },
                            [dfdx_half](const double* x, double* v) {
                                v[0] = dfdx_half(x[0]), v[1] = 2 * x[1], v[2] = dfdx_half(x[0]), v[3] = 1, v[4] = -1;
                            });
}
}  // namespace

TEST(NewtonSolver, JacobianWrittenIntoCompressedSlotsSolvesAsTripletsDo) {
    FnSystem t = circle_and_line();
    CompressedSystem c = compressed_circle([](double x) { return x; });
    std::vector<double> xt{1.0, 0.5}, xc{1.0, 0.5};
    const SolveResult rt = run(t, xt), rc = run(c, xc);
    ASSERT_EQ(rc.status, Status::Converged) << rc.message;
    EXPECT_EQ(rc.iterations, rt.iterations);
    EXPECT_EQ(xc, xt);

    // A value that is not finite is named by its first entry in the system's own order.
    CompressedSystem bad = compressed_circle([](double x) { return x > 0.9 ? std::nan("") : x; });
    xc = {1.0, 0.5};
    const SolveResult rb = run(bad, xc);
    EXPECT_EQ(rb.status, Status::NonFiniteJacobian);
    EXPECT_NE(rb.message.find("entry 0 (equation 0, unknown 0) is nan"), std::string::npos) << rb.message;
}
