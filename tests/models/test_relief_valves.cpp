// The two relief-valve flow models at their edges: a pressure drop outside its limits, zero and
// negative flux, the floor on the isentropic exponent, and the switch to choked flow at equality.
#include <gtest/gtest.h>

#include <cmath>

#include "checks/driver_jacobian_check.hpp"
#include "model_driver.hpp"
#include "models/unitops/psv_simple.hpp"
#include "models/unitops/psv_vap.hpp"

namespace {

TEST(PsvSimple, PressureDropIsLimitedAndZeroFluxStaysFinite) {
    ScopedSession session;
    VX_PSV_SIMPLE m(true);
    BlockUnderTest b(m);
    ASSERT_GE(b.status, 0) << b.Failure();
    m.PDROPC.SetSolverValue(1.5);
    for (auto [drop, limited] : {std::pair{-3.0, 0.0}, {0.0, 0.0}, {2.5, 2.5}, {6000.0, 5000.0}}) {
        m.P_DROP.SetSolverValue(drop);
        EXPECT_DOUBLE_EQ(b.Residuals()[0], 1.5 - limited) << drop;
    }
    m.AREA_RATIO.SetSolverValue(0.5);
    for (double flux : {0.0, -0.4}) {
        m.FLUX.SetSolverValue(flux);
        const double expected = 0.75 * flux / (75.0 * 2.0) - (1.5 / 1e-5) * 20.0 / (1e-5 + flux);
        EXPECT_NEAR(b.Residuals()[1], expected, 1e-9 * std::fabs(expected)) << flux;
    }
}

class PsvVap : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_GE(valve.status, 0) << valve.Failure(); }
    ScopedSession session;
    bool listed = (session->DefineComponentList("GAS", {"NITROGEN", "OXYGEN"}), true);
    VX_PSV_VAP m{true};
    BlockUnderTest valve{m};
    // Rows: [1] CP_V, [1] CV_V, K, ETA_CRIT, P_CRIT, ETA_A, CRITICAL_FLOW, PSI_SQ, FLUX.
    static constexpr int kK = 2, kEtaA = 5, kFlag = 6, kFlux = 8;
};

TEST_F(PsvVap, IsentropicExponentIsFlooredJustAboveOne) {
    m.K.SetSolverValue(2.0);
    m.CV_V.SetSolverValue(30.0);
    for (auto [cp, k] : {std::pair{30.0, 1.00001}, {24.0, 1.00001}, {30.00015, 1.00001}, {42.0, 1.4}}) {
        m.CP_V.SetSolverValue(cp);
        EXPECT_NEAR(valve.Residuals()[kK], 2.0 - k, 1e-12) << cp;
    }
}

TEST_F(PsvVap, EqualityWithTheCriticalRatioIsChoked) {
    m.ETA_CRIT.SetSolverValue(0.5);
    m.ETA_A.SetSolverValue(0.3);
    m.CRITICAL_FLOW.SetSolverValue(0.25);
    for (auto [eta, etaA, flag] : {std::tuple{0.5, 0.5, 1.0}, {0.2, 0.5, 1.0}, {0.50001, 0.50001, 0.0}}) {
        m.ETA.SetSolverValue(eta);
        const auto r = valve.Residuals();
        EXPECT_DOUBLE_EQ(r[kEtaA], 0.3 - etaA) << eta;
        EXPECT_DOUBLE_EQ(r[kFlag], 0.25 - flag) << eta;
    }
}

TEST_F(PsvVap, SignedSquareKeepsTheSignOfTheFlux) {
    m.PSI_SQ.SetSolverValue(0.0);
    m.AREA_RATIO.SetSolverValue(0.0);
    for (double flux : {-2.0, -0.5, 0.0, 2.0}) {
        m.FLUX.SetSolverValue(flux);
        EXPECT_DOUBLE_EQ(valve.Residuals()[kFlux], 1e-5 * std::fabs(1e-5 + flux) * flux / (75.0 * 2.0)) << flux;
        EXPECT_TRUE(zx::checks::CheckDriverJacobian(valve.driver).ok()) << flux;
    }
}

}  // namespace
