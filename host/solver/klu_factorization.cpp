#include "solver/klu_factorization.hpp"

#include <suitesparse/klu.h>

#include <new>
#include <stdexcept>
#include <string>

namespace zx::solve {

namespace {
// KLU answers a failed allocation with a status; the host stops on std::bad_alloc as it does for
// its own allocations, rather than calling the solve a failure with a half-written result.
void ThrowIfOutOfMemory(const klu_common& common) {
    if (common.status == KLU_OUT_OF_MEMORY) throw std::bad_alloc();
}
}  // namespace

struct KluFactorization::State {
    const CscPattern& pattern;
    klu_common common{};
    klu_symbolic* symbolic = nullptr;
    klu_numeric* numeric = nullptr;
    double refactor_rcond_drop = 1e-3;
    double singular_rcond = 1e-14;
    double fresh_rcond = 0.0;
    int singular_column = -1;
    int fresh = 0;
    int refactored = 0;
    int rejected = 0;

    explicit State(const CscPattern& p) : pattern(p) {
        klu_defaults(&common);
        common.halt_if_singular = 1;
    }
    ~State() {
        if (numeric) klu_free_numeric(&numeric, &common);
        if (symbolic) klu_free_symbolic(&symbolic, &common);
    }
    int* ap() { return const_cast<int*>(pattern.col_start.data()); }
    int* ai() { return const_cast<int*>(pattern.row_index.data()); }

    Outcome fresh_factor(double* ax) {
        if (numeric) klu_free_numeric(&numeric, &common);
        numeric = klu_factor(ap(), ai(), ax, symbolic, &common);
        ++fresh;
        if (!numeric) {
            ThrowIfOutOfMemory(common);
            if (common.status == KLU_SINGULAR) {
                singular_column = common.singular_col < pattern.n_cols ? common.singular_col : -1;
                return Outcome::Singular;
            }
            return Outcome::Failed;
        }
        if (!klu_rcond(symbolic, numeric, &common)) return Outcome::Failed;
        fresh_rcond = common.rcond;
        if (!(common.rcond >= singular_rcond)) {  // also catches NaN
            singular_column = -1;
            return Outcome::Singular;
        }
        return Outcome::Ok;
    }
};

KluFactorization::KluFactorization(const CscPattern& pattern)
    : s_(std::make_unique<State>(pattern)) {
    if (pattern.n_rows != pattern.n_cols) {
        throw std::invalid_argument("KLU needs a square matrix, not " +
                                    std::to_string(pattern.n_rows) + " x " +
                                    std::to_string(pattern.n_cols));
    }
}

KluFactorization::~KluFactorization() = default;

void KluFactorization::set_thresholds(double refactor_rcond_drop, double singular_rcond) {
    s_->refactor_rcond_drop = refactor_rcond_drop;
    s_->singular_rcond = singular_rcond;
}

KluFactorization::Outcome KluFactorization::analyse() {
    if (s_->numeric) klu_free_numeric(&s_->numeric, &s_->common);
    if (s_->symbolic) klu_free_symbolic(&s_->symbolic, &s_->common);
    s_->symbolic = klu_analyze(s_->pattern.n_cols, s_->ap(), s_->ai(), &s_->common);
    if (!s_->symbolic) {
        ThrowIfOutOfMemory(s_->common);
        return Outcome::Failed;
    }
    return s_->common.structural_rank < s_->pattern.n_cols ? Outcome::Singular : Outcome::Ok;
}

KluFactorization::Outcome KluFactorization::factor(const double* values) {
    State& s = *s_;
    if (!s.symbolic) return Outcome::Failed;
    double* ax = const_cast<double*>(values);
    if (!s.numeric) return s.fresh_factor(ax);

    // KLU leaves a numeric object whose refactorisation hit a zero pivot only
    // partly defined, so it is always replaced by the fresh factorisation.
    const bool reused = klu_refactor(s.ap(), s.ai(), ax, s.symbolic, s.numeric, &s.common) &&
                        klu_rcond(s.symbolic, s.numeric, &s.common) &&
                        s.common.rcond >= s.refactor_rcond_drop * s.fresh_rcond &&
                        s.common.rcond >= s.singular_rcond;
    if (reused) {
        ++s.refactored;
        return Outcome::Ok;
    }
    ++s.rejected;
    return s.fresh_factor(ax);
}

bool KluFactorization::solve(double* rhs) {
    const int n = s_->pattern.n_cols;
    return s_->numeric && klu_solve(s_->symbolic, s_->numeric, n, 1, rhs, &s_->common);
}

int KluFactorization::structural_rank() const { return s_->common.structural_rank; }
int KluFactorization::singular_column() const { return s_->singular_column; }
double KluFactorization::rcond() const { return s_->common.rcond; }
int KluFactorization::fresh_factorizations() const { return s_->fresh; }
int KluFactorization::refactorizations() const { return s_->refactored; }
int KluFactorization::rejected_refactorizations() const { return s_->rejected; }
int KluFactorization::klu_status() const { return s_->common.status; }

}  // namespace zx::solve
