// Sparse LU factorisation of a fixed-pattern square matrix with KLU, set up for
// Newton iterations: the ordering is computed once, the first factorisation
// pivots, and later ones reuse that pivot sequence (klu_refactor), which is
// much cheaper. A reused pivot sequence can go bad as the values drift, so a
// refactorisation is rejected, and a fresh pivoting factorisation done
// instead, when it meets a zero pivot or when its reciprocal condition
// estimate falls far below that of the last fresh factorisation.
#pragma once

#include <memory>

#include "solver/sparse_pattern.hpp"

namespace zx::solve {

class KluFactorization {
public:
    enum class Outcome { Ok, Singular, Failed };

    // The pattern must be square and outlive this object.
    explicit KluFactorization(const CscPattern& pattern);
    ~KluFactorization();
    KluFactorization(const KluFactorization&) = delete;
    KluFactorization& operator=(const KluFactorization&) = delete;

    // Refactorisations are kept while rcond >= refactor_rcond_drop times the
    // rcond of the last fresh factorisation. Any factorisation with rcond
    // below singular_rcond counts as singular. (rcond is KLU's cheap
    // min |U_kk| / max |U_kk| of the row-scaled matrix.)
    void set_thresholds(double refactor_rcond_drop, double singular_rcond);

    // Orders the pattern. Singular if its structural rank is below n.
    // Both throw std::bad_alloc when KLU runs out of memory.
    Outcome analyse();
    // Factorises values given in the pattern's compressed-column order.
    Outcome factor(const double* values);
    // Overwrites rhs with the solution of A x = rhs. False if KLU fails.
    bool solve(double* rhs);

    int structural_rank() const;
    // Unknown (column) at which the last singular factorisation found a zero
    // pivot, or -1 when KLU did not say.
    int singular_column() const;
    double rcond() const;
    int fresh_factorizations() const;
    int refactorizations() const;
    int rejected_refactorizations() const;
    int klu_status() const;

private:
    struct State;
    std::unique_ptr<State> s_;
};

}  // namespace zx::solve
