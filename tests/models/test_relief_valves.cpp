// The two relief-valve flow models at their edges: a pressure drop outside its limits, zero and
// negative flux, the floor on the isentropic exponent, and the switch to choked flow at equality.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "checks/driver_jacobian_check.hpp"
#include "model_driver.hpp"
#include "models/unitops/psv_simple.hpp"
#include "models/unitops/psv_vap.hpp"

namespace {

// Sets up one block with its globals linked, ready for values and evaluation.
class Valve {
public:
    explicit Valve(VX_ModelType& m) {
        m_driver.AddBlock(m);
        m_status = LinkGlobals(m_driver);
        for (int pass = 0; pass < 2 && m_status >= 0; ++pass) {
            m_status = m_driver.SetDims();
            if (m_status >= 0) m_status = m_driver.ExecuteAssignments(10, VX_CTX_MODEL);
        }
        if (m_status >= 0) m_status = m_driver.SetUpEquations();
        if (m_status >= 0) {
            m_rows.resize(static_cast<std::size_t>(m_driver.Entries()));
            m_cols.resize(m_rows.size());
            m_status = m_driver.JacPattern(m_rows.data(), m_cols.data());
        }
    }
    int Status() const { return m_status; }
    std::string Failure() const { return m_driver.LastFailure().message; }
    std::vector<double> Residuals() {
        std::vector<double> r(static_cast<std::size_t>(m_driver.Rows()));
        m_status = m_driver.Residuals(r.data());
        return r;
    }
    VX_ProtocolDriver& Driver() { return m_driver; }

private:
    VX_ProtocolDriver m_driver;
    std::vector<int> m_rows, m_cols;
    int m_status = 0;
};

TEST(PsvSimple, PressureDropIsHeldWithinItsLimits) {
    struct Case {
        double drop, limited;
    } cases[] = {{-3.0, 0.0}, {0.0, 0.0}, {2.5, 2.5}, {6000.0, 5000.0}};
    for (const Case& c : cases) {
        ScopedSession session;
        VX_PSV_SIMPLE m(true);
        Valve valve(m);
        ASSERT_GE(valve.Status(), 0) << valve.Failure();
        m.P_DROP.SetSolverValue(c.drop);
        m.PDROPC.SetSolverValue(0.75);
        const auto r = valve.Residuals();
        ASSERT_GE(valve.Status(), 0) << valve.Failure();
        EXPECT_DOUBLE_EQ(r[0], 0.75 - c.limited) << c.drop;
    }
}

TEST(PsvSimple, ZeroAndNegativeFluxStayFiniteAndDifferentiable) {
    for (double flux : {0.0, -0.4, 3.0}) {
        ScopedSession session;
        VX_PSV_SIMPLE m(true);
        Valve valve(m);
        ASSERT_GE(valve.Status(), 0) << valve.Failure();
        m.FLUX.SetSolverValue(flux);
        m.PDROPC.SetSolverValue(1.5);
        m.AREA_RATIO.SetSolverValue(0.5);
        const auto r = valve.Residuals();
        ASSERT_TRUE(std::isfinite(r[1])) << flux;
        const double expected = 0.75 * flux / (75.0 * 2.0) - (1.5 / 1e-5) * 20.0 / (1e-5 + flux);
        EXPECT_NEAR(r[1], expected, 1e-9 * std::fabs(expected)) << flux;
        // With UCF8 at 1e-5 a difference step would be a large part of it; at zero flux, of EPS.
        if (flux == 0.0) continue;
        SetUser(*m.UCF8, VX_Value(1.0, 0));
        EXPECT_TRUE(zx::checks::CheckDriverJacobian(valve.Driver()).ok()) << flux;
    }
}

class PsvVap : public ::testing::Test {
protected:
    void SetUp() override { session->DefineComponentList("GAS", {"NITROGEN", "OXYGEN"}); }
    ScopedSession session;
};

// Rows: [1] CP_V, [2] CV_V, K, ETA_CRIT, P_CRIT, ETA_A, CRITICAL_FLOW, PSI_SQ, FLUX.
constexpr int kK = 2, kEtaA = 5, kFlag = 6, kFlux = 8;

TEST_F(PsvVap, IsentropicExponentIsFlooredJustAboveOne) {
    VX_PSV_VAP m(true);
    Valve valve(m);
    ASSERT_GE(valve.Status(), 0) << valve.Failure();
    m.K.SetSolverValue(2.0);
    for (double ratio : {1.0, 0.8, 1.000005}) {
        m.CP_V.SetSolverValue(30.0 * ratio);
        m.CV_V.SetSolverValue(30.0);
        EXPECT_NEAR(valve.Residuals()[kK], 2.0 - 1.00001, 1e-12) << ratio;
    }
    m.CP_V.SetSolverValue(42.0);
    EXPECT_NEAR(valve.Residuals()[kK], 2.0 - 1.4, 1e-12);
}

TEST_F(PsvVap, EqualityWithTheCriticalRatioIsChoked) {
    VX_PSV_VAP m(true);
    Valve valve(m);
    ASSERT_GE(valve.Status(), 0) << valve.Failure();
    m.ETA_CRIT.SetSolverValue(0.5);
    m.ETA_A.SetSolverValue(0.3);
    m.CRITICAL_FLOW.SetSolverValue(0.25);
    struct Case {
        double eta, etaA, flag;   // the values the rows ask for
    } cases[] = {{0.5, 0.5, 1.0}, {0.2, 0.5, 1.0}, {0.50001, 0.50001, 0.0}, {0.9, 0.9, 0.0}};
    for (const Case& c : cases) {
        m.ETA.SetSolverValue(c.eta);
        const auto r = valve.Residuals();
        EXPECT_DOUBLE_EQ(r[kEtaA], 0.3 - c.etaA) << c.eta;
        EXPECT_DOUBLE_EQ(r[kFlag], 0.25 - c.flag) << c.eta;
    }
}

TEST_F(PsvVap, SignedSquareKeepsTheSignOfTheFlux) {
    VX_PSV_VAP m(true);
    Valve valve(m);
    ASSERT_GE(valve.Status(), 0) << valve.Failure();
    m.PSI_SQ.SetSolverValue(0.0);
    m.AREA_RATIO.SetSolverValue(0.0);
    for (double flux : {-2.0, -0.5, 0.0, 2.0}) {
        m.FLUX.SetSolverValue(flux);
        const double r = valve.Residuals()[kFlux];
        EXPECT_DOUBLE_EQ(r, 1e-5 * std::fabs(1e-5 + flux) * flux / (75.0 * 2.0)) << flux;
        EXPECT_TRUE(zx::checks::CheckDriverJacobian(valve.Driver()).ok()) << flux;
    }
}

}  // namespace
