// The utility routines of "Morvanex" and "Fabrik"/"fabrik", called through their declarations
// as models call them: values at chosen points, refusals, and analytic derivatives against
// central differences.
#include <cmath>

#include "declaration_call.hpp"

namespace {

using namespace zx_test;

bool Contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

TEST(UtilityRoutines, SquareRootAndDivision) {
    EXPECT_EQ(Call<VXProc_PSQRT>({Scalar(2.0)}), std::vector<double>{std::sqrt(2.0)});
    DerivativesAgree<VXProc_PSQRT>({Scalar(2.0)});
    EXPECT_TRUE(Contains(Refusal<VXProc_PSQRT>({Scalar(-1.0)}), "RX55IF_spsqrt: square root of the negative number -1"));
    EXPECT_TRUE(Contains(Refusal<VXProc_PSQRT>({Scalar(0.0)}, VX_E_ROUTINE_NONFINITE), "procedure PSQRT"));
    EXPECT_EQ(Call<VXProc_PDIVIDE>({Scalar(3.0), Scalar(4.0)}), std::vector<double>{0.75});
    DerivativesAgree<VXProc_PDIVIDE>({Scalar(3.0), Scalar(-4.0)});
    EXPECT_TRUE(Contains(Refusal<VXProc_PDIVIDE>({Scalar(3.0), Scalar(0.0)}), "division of 3 by zero"));
}

TEST(UtilityRoutines, LimitsKeepValuesAndMagnitudesInRange) {
    for (auto [x, y] : {std::pair{-2.0, 0.0}, {0.5, 0.5}, {7.0, 1.0}})
        EXPECT_EQ(Call<VXProc_PLIMIT>({Scalar(x), Scalar(0.0), Scalar(1.0)}), std::vector<double>{y}) << x;
    for (double x : {-2.0, 0.5, 7.0}) DerivativesAgree<VXProc_PLIMIT>({Scalar(x), Scalar(0.0), Scalar(1.0)});
    EXPECT_TRUE(Contains(Refusal<VXProc_PLIMIT>({Scalar(0.0), Scalar(2.0), Scalar(1.0)}), "low limit 2 lies above the high limit 1"));
    for (auto [x, y] : {std::pair{-5.0, -3.0}, {-2.0, -2.0}, {0.5, 1.0}, {-0.5, -1.0}, {0.0, 1.0}})
        EXPECT_EQ(Call<VXProc_PLIMIT_ABS>({Scalar(x), Scalar(1.0), Scalar(3.0)}), std::vector<double>{y}) << x;
    for (double x : {-5.0, -2.0, 0.5}) DerivativesAgree<VXProc_PLIMIT_ABS>({Scalar(x), Scalar(1.0), Scalar(3.0)});
    EXPECT_EQ(Call<VXProc_PDBAND>({Scalar(-1.0), Scalar(0.0), Scalar(2.0), Scalar(3.0), Scalar(5.0)}), std::vector<double>{-3.0});
    EXPECT_EQ(Call<VXProc_PDBAND>({Scalar(1.0), Scalar(0.0), Scalar(2.0), Scalar(3.0), Scalar(5.0)}), std::vector<double>{0.0});
    EXPECT_EQ(Call<VXProc_PDBAND>({Scalar(4.0), Scalar(0.0), Scalar(2.0), Scalar(3.0), Scalar(5.0)}), std::vector<double>{10.0});
}

TEST(UtilityRoutines, RampsAndRampedMinima) {
    for (auto [t, y] : {std::pair{0.0, 10.0}, {1.5, 15.0}, {9.0, 20.0}})
        EXPECT_EQ(Call<VXProc_PRAMP>({Scalar(t), Scalar(1.0), Scalar(2.0), Scalar(10.0), Scalar(20.0)}), std::vector<double>{y}) << t;
    for (double t : {0.0, 1.25, 9.0}) DerivativesAgree<VXProc_PRAMP>({Scalar(t), Scalar(1.0), Scalar(2.0), Scalar(10.0), Scalar(20.0)});
    // Exactly the minimum outside the band, smooth inside, continuous at its edges.
    EXPECT_EQ(Call<VXProc_PMINRAMP>({Scalar(1.0), Scalar(5.0), Scalar(1.0)}), std::vector<double>{1.0});
    EXPECT_EQ(Call<VXProc_PMINRAMP>({Scalar(2.0), Scalar(2.0), Scalar(1.0)}), std::vector<double>{1.75});
    EXPECT_NEAR(Call<VXProc_PMINRAMP>({Scalar(3.0 - 1e-9), Scalar(2.0), Scalar(1.0)})[0], 2.0, 1e-8);
    for (double a : {0.5, 1.7, 2.2, 4.0}) DerivativesAgree<VXProc_PMINRAMP>({Scalar(a), Scalar(2.0), Scalar(1.0)});
    for (double a : {-2.3, -1.6, 9.0}) DerivativesAgree<VXProc_PMINRAMPA>({Scalar(a), Scalar(-2.0), Scalar(0.5), Scalar(0.25)});
}

TEST(UtilityRoutines, PowerGoesThroughTheSparseInterface) {
    EXPECT_NEAR(Call<VXProc_PPOW>({Scalar(3.0), Scalar(1.5), Scalar(2.0)})[0], 2.0 * std::pow(3.0, 1.5), 1e-12);
    DerivativesAgree<VXProc_PPOW>({Scalar(3.0), Scalar(1.5), Scalar(2.0)});
    // A negative base takes an integral exponent; the slope in the exponent is then not real,
    // which matters only when the exponent is a variable.
    EXPECT_EQ(Call<VXProc_PPOW>({Scalar(-2.0), Constant(3.0), Scalar(1.0)}), std::vector<double>{-8.0});
    EXPECT_TRUE(Contains(Refusal<VXProc_PPOW>({Scalar(-2.0), Scalar(3.0), Scalar(1.0)}, VX_E_ROUTINE_NONFINITE),
                         "derivative nan of output element 1 with respect to input element 2"));
    EXPECT_TRUE(Contains(Refusal<VXProc_PPOW>({Scalar(-2.0), Scalar(0.5), Scalar(1.0)}), "entry point \"ZORM13_spPow\""));
}

TEST(UtilityRoutines, LogMeanTemperatureDifference) {
    const double counter = 20.0 / std::log(80.0 / 60.0), cocurrent = 100.0 / std::log(120.0 / 20.0);
    EXPECT_NEAR(Call<VXProc_PLMTD>({Scalar(150), Scalar(90), Scalar(30), Scalar(70), Text("counter")})[0], counter, 1e-12);
    EXPECT_NEAR(Call<VXProc_PLMTD>({Scalar(150), Scalar(90), Scalar(30), Scalar(70), Text("Co-Current")})[0], cocurrent, 1e-12);
    EXPECT_NEAR(Call<VXProc_PLMTD>({Scalar(150), Scalar(90), Scalar(50), Scalar(110), Text("COUNTER")})[0], 40.0, 1e-12);
    DerivativesAgree<VXProc_PLMTD>({Scalar(150), Scalar(90), Scalar(30), Scalar(70), Text("COUNTER")});
    DerivativesAgree<VXProc_PLMTD>({Scalar(150), Scalar(90), Scalar(30), Scalar(70), Text("PARALLEL")});
    EXPECT_TRUE(Contains(Refusal<VXProc_PLMTD>({Scalar(150), Scalar(90), Scalar(30), Scalar(70), Text("CROSS")}),
                         "flow arrangement \"CROSS\""));
    EXPECT_TRUE(Contains(Refusal<VXProc_PLMTD>({Scalar(50), Scalar(40), Scalar(30), Scalar(60), Text("COUNTER")}),
                         "must be nonzero and of one sign"));
}

TEST(UtilityRoutines, CopiesAndSignals) {
    EXPECT_EQ(Call<VXProc_PCOPY1>({Scalar(-4.5)}), std::vector<double>{-4.5});
    EXPECT_EQ(Call<VXProc_PINT>({Scalar(-4.5)}), std::vector<double>{-4.0});
    EXPECT_EQ(Call<VXProc_PINT>({Scalar(4.99)}), std::vector<double>{4.0});
    EXPECT_NEAR(Call<VXProc_PGAUSS>({Scalar(1.0)})[0], 0.24197072451914337, 1e-15);
    EXPECT_EQ(Call<VXProc_PSOLMODE>({}), std::vector<double>{0.0});
    EXPECT_EQ(Call<VXProc_PCOPYZ>({Array({1, 2, 3}, {3})}, {{3}}), (std::vector<double>{1, 2, 3}));
}

TEST(UtilityRoutines, VectorsAndMatrices) {
    EXPECT_EQ(Call<VXProc_PMIN>({Array({3, 1, 2}, {3}), Integer(3)}), std::vector<double>{1});
    EXPECT_EQ(Call<VXProc_PMIN>({Array({3, 4, 2}, {3}), Integer(2)}), std::vector<double>{3});
    DerivativesAgree<VXProc_PMIN>({Array({3, 1, 2}, {3}), Integer(3)});
    EXPECT_TRUE(Contains(Refusal<VXProc_PMIN>({Array({3, 1, 2}, {3}), Integer(4)}), "count 4 is not between 1 and the vector's size 3"));
    EXPECT_EQ(Call<VXProc_PPROD1>({Array({1, 2, 3}, {3}), Array({4, 5, 6}, {3})}), std::vector<double>{32});
    // x (1 x 2) times A (2 x 3), A row by row.
    EXPECT_EQ(Call<VXProc_PPROD>({Array({1, 2}, {2}), Array({1, 2, 3, 4, 5, 6}, {2, 3})}, {{3}}), (std::vector<double>{9, 12, 15}));
    // A (2 x 3) times x (3).
    EXPECT_EQ(Call<VXProc_PMULT2D>({Array({1, 2, 3, 4, 5, 6}, {2, 3}), Array({1, 0, -1}, {3})}, {{2}}), (std::vector<double>{-2, -2}));
    DerivativesAgree<VXProc_PMULT2D>({Array({1, 2, 3, 4, 5, 6}, {2, 3}), Array({1, 0.5, -1}, {3})}, {{2}});
}

}  // namespace
