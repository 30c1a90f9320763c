#include <gtest/gtest.h>

#include <stdexcept>

#include "solver/sparse_pattern.hpp"

using zx::solve::CscPattern;
using zx::solve::TripletPattern;

TEST(CscPattern, SortsRowsMergesRepeatsAndScattersRepeatedly) {
    // 3 x 3 with column 1 empty; (2,0) given twice and (0,2) three times.
    TripletPattern t{3, 3, {2, 0, 2, 1, 0, 0}, {0, 2, 0, 0, 2, 2}};
    const CscPattern p = CscPattern::from_triplets(t);
    EXPECT_EQ(p.col_start, (std::vector<int>{0, 2, 2, 3}));
    EXPECT_EQ(p.row_index, (std::vector<int>{1, 2, 0}));
    EXPECT_EQ(p.slot_of_triplet, (std::vector<int>{1, 2, 1, 0, 2, 2}));

    const double v[] = {1.0, 10.0, 2.0, 5.0, 20.0, 30.0};
    std::vector<double> csc(p.nnz(), -7.0);
    for (int pass = 0; pass < 2; ++pass) {  // must overwrite, not accumulate
        p.scatter(v, csc.data());
        EXPECT_EQ(csc, (std::vector<double>{5.0, 3.0, 60.0}));
    }
}

TEST(CscPattern, RejectsMalformedTripletsNamingTheEntry) {
    const auto message = [](const TripletPattern& t) {
        try {
            CscPattern::from_triplets(t);
        } catch (const std::invalid_argument& e) {
            return std::string(e.what());
        }
        return std::string("no error");
    };
    EXPECT_EQ(message({2, 2, {0, 2}, {0, 1}}), "Jacobian pattern entry 1 has row 2 outside 0..1");
    EXPECT_EQ(message({2, 2, {0, 1}, {0, -1}}), "Jacobian pattern entry 1 has column -1 outside 0..1");
    EXPECT_EQ(message({2, 2, {0, 1}, {0}}), "Jacobian pattern has 2 row indices but 1 column indices");
    EXPECT_EQ(message({-1, 2, {}, {}}), "Jacobian pattern has negative dimensions -1 x 2");
}
