#include "solver/newton_solver.hpp"

#include <algorithm>
#include <limits>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "solver/bounded_step.hpp"
#include "solver/klu_factorization.hpp"
#include "solver/largest_residuals.hpp"

namespace zx::solve {

const char* status_text(SolveStatus status) {
    switch (status) {
#define ZX_SOLVE_STATUS(name, text) \
    case SolveStatus::name:         \
        return text;
#include "solver/solve_status.def"
    }
    return "unknown solver status";
}

const char* status_name(SolveStatus status) {
    switch (status) {
#define ZX_SOLVE_STATUS(name, text) \
    case SolveStatus::name:         \
        return #name;
#include "solver/solve_status.def"
    }
    return "Unknown";
}

namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string fmt(double v) {
    if (std::isnan(v)) return "nan";  // printf may write "-nan"
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.6g", v);
    return buf;
}

int first_non_finite(const double* v, int n) {
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(v[i])) return i;
    }
    return -1;
}

// s_i = max(1, max_j |J_ij|); see the scaling note in the header.
void row_scales(const CscPattern& p, const double* values, double* s) {
    std::fill(s, s + p.n_rows, 1.0);
    for (int k = 0; k < p.nnz(); ++k) {
        double& si = s[p.row_index[k]];
        si = std::max(si, std::fabs(values[k]));
    }
}

double scaled_max_norm(const double* r, const double* s, int n) {
    double norm = 0.0;
    for (int i = 0; i < n; ++i) {
        const double v = std::fabs(r[i] / s[i]);
        if (!(v <= norm)) norm = v;  // lets NaN through
    }
    return norm;
}

double scaled_merit(const double* r, const double* s, int n) {
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        const double v = r[i] / s[i];
        sum += v * v;
    }
    return 0.5 * sum;
}

std::string check_inputs(const TripletPattern& t, std::size_t nx, std::size_t nlo, std::size_t nhi,
                         const std::vector<double>& lower, const std::vector<double>& upper,
                         const SolverOptions& o) {
    if (t.n_rows != t.n_cols) {
        return "the system has " + std::to_string(t.n_rows) + " equations in " +
               std::to_string(t.n_cols) + " unknowns; Newton needs a square system";
    }
    const auto n = static_cast<std::size_t>(t.n_cols);
    if (nx != n) return "x has " + std::to_string(nx) + " entries for " + std::to_string(n) + " unknowns";
    if (nlo != n) return "lower has " + std::to_string(nlo) + " entries for " + std::to_string(n) + " unknowns";
    if (nhi != n) return "upper has " + std::to_string(nhi) + " entries for " + std::to_string(n) + " unknowns";
    for (std::size_t i = 0; i < n; ++i) {
        if (!(lower[i] <= upper[i])) {
            return "unknown " + std::to_string(i) + " has lower bound " + fmt(lower[i]) +
                   " and upper bound " + fmt(upper[i]);
        }
    }
    if (o.max_iterations < 0) return "max_iterations = " + std::to_string(o.max_iterations) + " is negative";
    if (!(o.tolerance > 0.0)) return "tolerance = " + fmt(o.tolerance) + " is not positive";
    if (!(o.min_step >= 0.0)) return "min_step = " + fmt(o.min_step) + " is negative";
    if (!(o.boundary_fraction > 0.0 && o.boundary_fraction <= 1.0)) {
        return "boundary_fraction = " + fmt(o.boundary_fraction) + " is outside (0, 1]";
    }
    if (!(o.armijo > 0.0 && o.armijo < 0.5)) return "armijo = " + fmt(o.armijo) + " is outside (0, 0.5)";
    if (o.max_backtracks < 0) return "max_backtracks = " + std::to_string(o.max_backtracks) + " is negative";
    if (!(o.refactor_rcond_drop >= 0.0)) return "refactor_rcond_drop = " + fmt(o.refactor_rcond_drop) + " is negative";
    if (!(o.singular_rcond >= 0.0)) return "singular_rcond = " + fmt(o.singular_rcond) + " is negative";
    return {};
}

class NewtonRun {
public:
    NewtonRun(SparseSystem& system, std::vector<double>& x, const std::vector<double>& lower,
              const std::vector<double>& upper, const SolverOptions& options,
              std::function<void(const IterationRecord&)>& on_iteration)
        : sys_(system), x_(x), lower_(lower), upper_(upper), lo_(lower.data()), hi_(upper.data()), opt_(options),
          on_iteration_(on_iteration) {}

    SolveResult run();

private:
    void iterate();
    void finish(SolveStatus status, std::string detail);
    void record(int iteration, double norm, double step, double damping);
    void factor_failure(KluFactorization::Outcome outcome, int k);
    bool line_search(int k, const StepLimit& limit, double f0);
    bool evaluate_jacobian();
    int first_non_finite_entry() const;

    SparseSystem& sys_;
    std::vector<double>& x_;
    const std::vector<double>& lower_;
    const std::vector<double>& upper_;
    const double* lo_;
    const double* hi_;
    const SolverOptions& opt_;
    std::function<void(const IterationRecord&)>& on_iteration_;
    SolveResult res_;
    CscPattern own_csc_;               // used when the system brings no compressed pattern
    const CscPattern* csc_ = &own_csc_;
    std::unique_ptr<KluFactorization> lu_;  // refers to csc_
    int n_ = 0;
    bool have_scales_ = false;
    bool direct_ = false;              // the system writes into csc_values_ itself
    double last_step_norm_ = 0.0;
    double last_damping_ = 0.0;
    std::vector<double> r_, r_trial_, x_trial_, scale_, step_, triplet_values_, csc_values_;
};

void NewtonRun::record(int iteration, double norm, double step, double damping) {
    const IterationRecord rec{iteration, norm, step, damping};
    if (opt_.verbose_log) res_.log.push_back(rec);  // capacity reserved up front
    if (on_iteration_) on_iteration_(rec);
}

void NewtonRun::finish(SolveStatus status, std::string detail) {
    res_.status = status;
    res_.message = status_text(status);
    if (!detail.empty()) res_.message += ": " + detail;
    // After a model failure the residuals at hand say nothing about it.
    if (status == SolveStatus::Converged || status == SolveStatus::ModelFailure || res_.residual_evaluations == 0 ||
        opt_.report_residuals <= 0) {
        return;
    }
    // Rank by scaled residual, the measure convergence is judged by, but
    // report the residual the model computed.
    std::vector<double> scaled(r_);
    if (have_scales_) {
        for (int i = 0; i < n_; ++i) scaled[i] /= scale_[i];
    }
    res_.largest_residuals = largest_residuals(scaled.data(), n_, opt_.report_residuals);
    res_.message += "; largest residuals:";
    for (auto& [i, v] : res_.largest_residuals) {
        v = r_[i];
        res_.message += " equation " + std::to_string(i) + " = " + fmt(v) + ",";
    }
    res_.message.pop_back();
}

bool NewtonRun::evaluate_jacobian() {
    return direct_ ? sys_.jacobian_compressed(x_.data(), csc_values_.data())
                   : sys_.jacobian(x_.data(), triplet_values_.data());
}

// The first entry, in the system's triplet order, whose value is not finite (-1: none). Written
// straight into the compressed slots, an entry is judged by its slot's sum.
int NewtonRun::first_non_finite_entry() const {
    if (!direct_) return first_non_finite(triplet_values_.data(), csc_->n_triplets());
    if (first_non_finite(csc_values_.data(), csc_->nnz()) < 0) return -1;
    const int* slot = csc_->slot_of_triplet.data();
    for (int e = 0; e < csc_->n_triplets(); ++e)
        if (!std::isfinite(csc_values_[static_cast<std::size_t>(slot[e])])) return e;
    return -1;
}

void NewtonRun::factor_failure(KluFactorization::Outcome outcome, int k) {
    const KluFactorization& lu = *lu_;
    const std::string when = " in iteration " + std::to_string(k + 1);
    if (outcome == KluFactorization::Outcome::Singular) {
        res_.singular_column = lu.singular_column();
        if (res_.singular_column >= 0) {
            return finish(SolveStatus::SingularJacobian,
                          "zero pivot at unknown " + std::to_string(res_.singular_column) + when);
        }
        return finish(SolveStatus::SingularJacobian,
                      "reciprocal condition estimate " + fmt(lu.rcond()) + when);
    }
    return finish(SolveStatus::LinearSolverFailure,
                  "KLU status " + std::to_string(lu.klu_status()) + " while factorising" + when);
}

// Backtracks from the bound-limited fraction limit.fraction of the Newton step
// until 0.5 ||r/s||^2 drops by the Armijo amount. Along the Newton direction
// the merit's slope is -2 f0, which gives both the test and the quadratic
// model used to pick the next trial length (kept within [0.1, 0.5] of the
// last one). Non-finite trial residuals just halve the step.
bool NewtonRun::line_search(int k, const StepLimit& limit, double f0) {
    const auto fail = [&](std::string detail) {
        if (limit.limiting_index >= 0) {
            detail += "; the step was limited by a bound of unknown " + std::to_string(limit.limiting_index);
        }
        finish(SolveStatus::LineSearchFailed, std::move(detail));
        return false;
    };
    double lambda = limit.fraction;
    for (int backtrack = 0;; ++backtrack) {
        const double step_norm = relative_step_norm(x_.data(), step_.data(), lambda, n_);
        if (!(step_norm >= opt_.min_step) || lambda <= 0.0) {
            return fail("in iteration " + std::to_string(k + 1) + " the step shrank to " + fmt(step_norm) +
                        " without reducing the scaled residual norm");
        }
        take_step(x_.data(), step_.data(), lambda, lo_, hi_, n_, x_trial_.data());
        ++res_.residual_evaluations;
        if (!sys_.residuals(x_trial_.data(), r_trial_.data())) {
            finish(SolveStatus::ModelFailure, sys_.failure());
            return false;
        }
        const double f = scaled_merit(r_trial_.data(), scale_.data(), n_);
        if (std::isfinite(f) && f <= f0 * (1.0 - 2.0 * opt_.armijo * lambda)) {
            std::copy(x_trial_.begin(), x_trial_.end(), x_.begin());
            std::swap(r_, r_trial_);
            last_step_norm_ = step_norm;
            last_damping_ = lambda;
            return true;
        }
        if (backtrack == opt_.max_backtracks) {
            return fail("in iteration " + std::to_string(k + 1) + " " + std::to_string(backtrack + 1) +
                        " trial steps did not reduce the scaled residual norm");
        }
        double next = 0.5 * lambda;
        if (std::isfinite(f)) next = f0 * lambda * lambda / (f - f0 + 2.0 * f0 * lambda);
        lambda = std::clamp(next, 0.1 * lambda, 0.5 * lambda);
    }
}

SolveResult NewtonRun::run() {
    const auto start = Clock::now();
    iterate();
    if (lu_) {
        res_.fresh_factorizations = lu_->fresh_factorizations();
        res_.refactorizations = lu_->refactorizations();
    }
    res_.total_seconds = seconds_since(start);
    return std::move(res_);
}

void NewtonRun::iterate() {
    const TripletPattern& tp = sys_.pattern();
    res_.status = SolveStatus::InvalidInput;
    if (std::string bad = check_inputs(tp, x_.size(), lower_.size(), upper_.size(), lower_, upper_, opt_);
        !bad.empty()) {
        if (tp.n_rows != tp.n_cols) {
            try {
                res_.structure = analyse_structure(tp);
                bad += ". " + explain_structure(res_.structure);
            } catch (const std::invalid_argument& e) {
                bad = e.what();
            }
        }
        return finish(SolveStatus::InvalidInput, bad);
    }
    n_ = tp.n_cols;
    if (opt_.verbose_log) res_.log.reserve(static_cast<std::size_t>(opt_.max_iterations) + 1);

    auto t = Clock::now();
    try {
        if (const CscPattern* given = sys_.compressed_pattern()) csc_ = given;
        else own_csc_ = CscPattern::from_triplets(tp);
    } catch (const std::invalid_argument& e) {
        n_ = 0;
        return finish(SolveStatus::InvalidInput, e.what());
    }
    res_.analyse_seconds = seconds_since(t);
    // Everything the iterations touch is sized here; the loop allocates
    // nothing itself (a fresh KLU factorisation allocates inside KLU).
    r_.assign(n_, 0.0);
    r_trial_.assign(n_, 0.0);
    x_trial_.assign(n_, 0.0);
    scale_.assign(n_, 1.0);
    step_.assign(n_, 0.0);
    direct_ = sys_.writes_compressed() && csc_ == sys_.compressed_pattern();
    if (!direct_) triplet_values_.assign(csc_->n_triplets(), 0.0);
    csc_values_.assign(csc_->nnz(), 0.0);
    for (int i = 0; i < n_; ++i) x_[i] = std::clamp(x_[i], lower_[i], upper_[i]);

    if (n_ == 0) {
        record(0, 0.0, 0.0, 0.0);
        return finish(SolveStatus::Converged, "the system is empty");
    }

    lu_ = std::make_unique<KluFactorization>(*csc_);
    KluFactorization& lu = *lu_;
    lu.set_thresholds(opt_.refactor_rcond_drop, opt_.singular_rcond);
    t = Clock::now();
    const auto analysed = lu.analyse();
    res_.analyse_seconds += seconds_since(t);
    if (analysed == KluFactorization::Outcome::Singular) {
        res_.structure = analyse_structure(*csc_);
        return finish(SolveStatus::StructurallySingular, explain_structure(res_.structure));
    }
    if (analysed == KluFactorization::Outcome::Failed) {
        return finish(SolveStatus::LinearSolverFailure,
                      "KLU status " + std::to_string(lu.klu_status()) + " while ordering");
    }

    ++res_.residual_evaluations;
    if (!sys_.residuals(x_.data(), r_.data())) return finish(SolveStatus::ModelFailure, sys_.failure());
    if (const int i = first_non_finite(r_.data(), n_); i >= 0) {
        res_.residual_norm = std::numeric_limits<double>::infinity();
        res_.non_finite_row = i;
        return finish(SolveStatus::NonFiniteResidual,
                      "equation " + std::to_string(i) + " gives " + fmt(r_[i]) + " at the starting point");
    }

    for (int k = 0;; ++k) {
        ++res_.jacobian_evaluations;
        if (!evaluate_jacobian()) return finish(SolveStatus::ModelFailure, sys_.failure());
        if (const int e = first_non_finite_entry(); e >= 0) {
            const double value = direct_ ? csc_values_[csc_->slot_of_triplet[e]] : triplet_values_[e];
            return finish(SolveStatus::NonFiniteJacobian,
                          "entry " + std::to_string(e) + " (equation " + std::to_string(tp.rows[e]) +
                              ", unknown " + std::to_string(tp.cols[e]) + ") is " + fmt(value) +
                              " in iteration " + std::to_string(k + 1));
        }
        if (!direct_) csc_->scatter(triplet_values_.data(), csc_values_.data());
        row_scales(*csc_, csc_values_.data(), scale_.data());
        have_scales_ = true;

        res_.residual_norm = scaled_max_norm(r_.data(), scale_.data(), n_);
        res_.iterations = k;
        if (k == 0) record(0, res_.residual_norm, 0.0, 0.0);
        if (res_.residual_norm <= opt_.tolerance) break;
        if (k >= opt_.max_iterations) {
            return finish(SolveStatus::MaxIterations,
                          "the scaled residual norm is " + fmt(res_.residual_norm) + " after " +
                              std::to_string(k) + " iterations (tolerance " + fmt(opt_.tolerance) + ")");
        }

        t = Clock::now();
        const auto factored = lu.factor(csc_values_.data());
        res_.factor_seconds += seconds_since(t);
        if (factored != KluFactorization::Outcome::Ok) return factor_failure(factored, k);

        t = Clock::now();
        for (int i = 0; i < n_; ++i) step_[i] = -r_[i];
        const bool solved = lu.solve(step_.data());
        res_.solve_seconds += seconds_since(t);
        if (!solved) {
            return finish(SolveStatus::LinearSolverFailure,
                          "KLU status " + std::to_string(lu.klu_status()) + " while solving in iteration " +
                              std::to_string(k + 1));
        }
        if (const int i = first_non_finite(step_.data(), n_); i >= 0) {
            return finish(SolveStatus::SingularJacobian,
                          "the Newton step for unknown " + std::to_string(i) + " is " + fmt(step_[i]) +
                              " in iteration " + std::to_string(k + 1));
        }

        freeze_at_bounds(x_.data(), step_.data(), lo_, hi_, n_);
        const StepLimit limit = limit_step(x_.data(), step_.data(), lo_, hi_, n_, opt_.boundary_fraction);
        if (!line_search(k, limit, scaled_merit(r_.data(), scale_.data(), n_))) return;

        res_.iterations = k + 1;
        res_.residual_norm = scaled_max_norm(r_.data(), scale_.data(), n_);
        record(k + 1, res_.residual_norm, last_step_norm_, last_damping_);
        if (res_.residual_norm <= opt_.tolerance) break;
        if (k + 1 >= opt_.max_iterations) {
            return finish(SolveStatus::MaxIterations,
                          "the scaled residual norm is " + fmt(res_.residual_norm) + " after " +
                              std::to_string(k + 1) + " iterations (tolerance " + fmt(opt_.tolerance) + ")");
        }
    }
    finish(SolveStatus::Converged, "scaled residual norm " + fmt(res_.residual_norm) + " after " +
                                       std::to_string(res_.iterations) + " iterations");
}

}  // namespace

SolveResult solve(SparseSystem& system, std::vector<double>& x, const std::vector<double>& lower,
                  const std::vector<double>& upper, const SolverOptions& options,
                  std::function<void(const IterationRecord&)> on_iteration) {
    return NewtonRun(system, x, lower, upper, options, on_iteration).run();
}

}  // namespace zx::solve
