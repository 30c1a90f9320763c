#include <gtest/gtest.h>

#include "solver/klu_factorization.hpp"

using zx::solve::CscPattern;
using zx::solve::KluFactorization;
using zx::solve::TripletPattern;
using Outcome = KluFactorization::Outcome;

namespace {

// Full 2 x 2 pattern, values column by column: a00 a10 a01 a11.
CscPattern full2() { return CscPattern::from_triplets(TripletPattern{2, 2, {0, 1, 0, 1}, {0, 0, 1, 1}}); }

void expect_solves(KluFactorization& lu, const double* a, double x0, double x1) {
    double b[2] = {a[0] * x0 + a[2] * x1, a[1] * x0 + a[3] * x1};
    ASSERT_TRUE(lu.solve(b));
    EXPECT_NEAR(b[0], x0, 1e-12);
    EXPECT_NEAR(b[1], x1, 1e-12);
}

}  // namespace

TEST(KluFactorization, ReusesPivotsUntilTheyGoBadThenRepivots) {
    const CscPattern p = full2();
    const double first[4] = {4, 1, 1, 3};  // diagonal pivots chosen
    const double nearby[4] = {5, 1, 1, 3};
    const double zero_pivot[4] = {0, 1, 1, 3};     // the old order divides by 0
    const double tiny_pivot[4] = {1e-13, 1, 1, 3};  // the old order loses all accuracy
    for (const double* bad : {zero_pivot, tiny_pivot}) {
        KluFactorization lu(p);
        ASSERT_EQ(lu.analyse(), Outcome::Ok);
        ASSERT_EQ(lu.factor(first), Outcome::Ok);
        expect_solves(lu, first, 1.0, -2.0);
        ASSERT_EQ(lu.factor(nearby), Outcome::Ok);
        expect_solves(lu, nearby, 0.5, 2.0);
        EXPECT_EQ(lu.refactorizations(), 1);
        EXPECT_EQ(lu.fresh_factorizations(), 1);

        ASSERT_EQ(lu.factor(bad), Outcome::Ok);
        expect_solves(lu, bad, 3.0, -1.0);
        EXPECT_EQ(lu.rejected_refactorizations(), 1);
        EXPECT_EQ(lu.fresh_factorizations(), 2);
    }
}
