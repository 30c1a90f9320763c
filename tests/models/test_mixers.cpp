// The inlet mixers: one feed taken as it is, flow-weighted and arithmetic means by FIN against
// EPS at each evaluation, the lowest or the equal pressures, INLETMIXER's reverse-flow branch
// and the backward state it fixes, and the unit operations that inherit INLETMIXERFWD.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "model_driver.hpp"
#include "models/mixers/inletmixer.hpp"
#include "models/mixers/inletmixerfwd.hpp"
#include "frame/all_containers.hpp"

namespace {

struct Feed {
    double f, za, h, p;
};

// A mixer over components A and B with named feeds, set up through the driver with its
// external references bound to the session's globals.
template <class Mixer>
class Rig {
public:
    explicit Rig(const std::vector<std::string>& feeds) {
        session->DefineComponentList("AB", {"A", "B"});
        for (const std::string& name : feeds) EXPECT_NE(m.IN_F.AddConnection(name, nullptr), nullptr) << name;
        driver.AddBlock(m);
        EXPECT_GE(LinkGlobals(driver), 0) << driver.LastFailure().message;
    }
    VX_REALPARAMETER& Global(const char* name) { return *session->Global<VX_REALPARAMETER>(name); }
    VX_LOGICALPARAMETER& Flag(const char* name) { return *session->Global<VX_LOGICALPARAMETER>(name); }
    // Sets up the equations; their count.
    int SetUp() {
        for (int pass = 0; pass < 2; ++pass) {
            EXPECT_GE(driver.SetDims(), 0) << driver.LastFailure().message;
            EXPECT_GE(driver.ExecuteAssignments(0, VX_CTX_MODEL), 0) << driver.LastFailure().message;
        }
        EXPECT_GE(driver.SetUpEquations(), 0) << driver.LastFailure().message;
        return driver.Rows();
    }
    void Set(const std::vector<Feed>& feeds) {
        for (std::size_t j = 0; j < feeds.size(); ++j) {
            auto& port = m.IN_F.PortAt(static_cast<std::ptrdiff_t>(j));
            port.F.SetSolverValue(feeds[j].f);
            port.Z("A").SetSolverValue(feeds[j].za);
            port.Z("B").SetSolverValue(1.0 - feeds[j].za);
            port.H.SetSolverValue(feeds[j].h);
            port.P.SetSolverValue(feeds[j].p);
        }
    }
    std::vector<double> Residuals() {
        std::vector<double> r(static_cast<std::size_t>(driver.Rows()));
        EXPECT_GE(driver.Residuals(r.data()), 0) << driver.LastFailure().message;
        return r;
    }

    ScopedSession session;
    Mixer m{true};
    VX_ProtocolDriver driver;
};

TEST(InletMixers, OneFeedIsTakenAsItIsWhateverTheFlow) {
    Rig<VX_INLETMIXERFWD> rig({"ONLY"});
    ASSERT_EQ(rig.SetUp(), 1 + 2 + 1 + 1);
    EXPECT_EQ(rig.m.NC.fv(), 1);
    rig.Set({{0.0, 0.3, -0.2, 4.0}});
    rig.m.ZIN("A").SetSolverValue(0.3);
    rig.m.ZIN("B").SetSolverValue(0.7);
    rig.m.HIN.SetSolverValue(-0.2);
    rig.m.PIN.SetSolverValue(4.0);
    for (double fin : {0.0, 1e-5, 50.0}) {
        rig.m.FIN.SetSolverValue(fin);
        EXPECT_EQ(rig.Residuals(), (std::vector<double>{fin, 0.0, 0.0, 0.0, 0.0})) << fin;
    }
}

TEST(InletMixers, TheFlowAgainstEpsChoosesTheMeanAtEachEvaluation) {
    Rig<VX_INLETMIXERFWD> rig({"F1", "F2"});
    ASSERT_EQ(rig.SetUp(), 5);
    EXPECT_EQ(rig.Global("EPS").fv(), 1e-5);
    rig.Set({{0.75e-5, 0.2, 1.0, 3.0}, {0.25e-5, 0.6, 3.0, 2.0}});
    rig.m.ZIN("A").SetSolverValue(0.4);   // the arithmetic means
    rig.m.ZIN("B").SetSolverValue(0.6);
    rig.m.HIN.SetSolverValue(2.0);
    rig.m.PIN.SetSolverValue(2.0);         // the lowest feed pressure
    // FIN equal to EPS: not above it, so the arithmetic mean holds.
    rig.m.FIN.SetSolverValue(1e-5);
    std::vector<double> r = rig.Residuals();
    ASSERT_EQ(r.size(), 5u);
    for (std::size_t k = 0; k < 5; ++k) EXPECT_NEAR(r[k], 0.0, 1e-15) << k;
    // Just above EPS the flow-weighted form is written, with as many rows.
    rig.m.FIN.SetSolverValue(2e-5);
    r = rig.Residuals();
    ASSERT_EQ(r.size(), 5u);
    EXPECT_DOUBLE_EQ(r[0], 2e-5 - 1e-5);
    EXPECT_DOUBLE_EQ(r[1], 2e-5 * 0.4 - (0.75e-5 * 0.2 + 0.25e-5 * 0.6));
    EXPECT_DOUBLE_EQ(r[3], 2e-5 * 2.0 - (0.75e-5 * 1.0 + 0.25e-5 * 3.0));
    EXPECT_EQ(r[4], 0.0);
}

TEST(InletMixers, APressureDrivenMixerEqualsEveryFeedPressure) {
    Rig<VX_INLETMIXERFWD> rig({"F1", "F2", "F3"});
    rig.m.PDRIVEN.AssignUser(VX_ATTR_VALUE, VX_Value(true, 0));
    ASSERT_EQ(rig.SetUp(), 1 + 2 + 1 + 3);
    EXPECT_EQ(rig.m.NC.fv(), 3);
    rig.Set({{1, 0.5, 0, 3.0}, {1, 0.5, 0, 2.0}, {1, 0.5, 0, 5.0}});
    rig.m.PIN.SetSolverValue(2.5);
    const std::vector<double> r = rig.Residuals();
    EXPECT_EQ(std::vector<double>(r.end() - 3, r.end()), (std::vector<double>{0.5, -0.5, 2.5}));
}

TEST(InletMixers, TheGlobalPressureDrivenFlagReachesTheModel) {
    Rig<VX_INLETMIXERFWD> rig({"F1", "F2"});
    rig.Flag("GLOBALPDRIVEN").AssignUser(VX_ATTR_VALUE, VX_Value(true, 0));
    EXPECT_EQ(rig.SetUp(), 4 + 2);
    EXPECT_TRUE(rig.m.PDRIVEN.fv());
}

TEST(InletMixers, ReverseFlowWithPressuresLeavesOnlyThePressureEqualities) {
    Rig<VX_INLETMIXER> rig({"F1", "F2"});
    rig.m.PDRIVEN.AssignUser(VX_ATTR_VALUE, VX_Value(true, 0));
    rig.Flag("GLOBALRFLOW").AssignUser(VX_ATTR_VALUE, VX_Value(true, 0));
    ASSERT_EQ(rig.SetUp(), 2);
    ASSERT_EQ(rig.m.Groups().size(), 1u);   // the mass and energy group writes nothing
    rig.Set({{1, 0.5, 0, 3.0}, {1, 0.5, 0, 2.0}});
    rig.m.PIN.SetSolverValue(2.0);
    EXPECT_EQ(rig.Residuals(), (std::vector<double>{1.0, 0.0}));
}

TEST(InletMixers, WithoutReverseFlowTheMatchedBackwardStateIsFixed) {
    for (const bool reverse : {false, true}) {
        Rig<VX_INLETMIXER> rig({"F1"});
        VX_MATERIALPORTRPREV upstream(true);
        std::string why;
        std::unique_ptr<VX_Connection> joined(VX_Connection::Make(upstream, rig.m.IN_F("F1"), &why));
        ASSERT_TRUE(joined) << why;
        rig.driver.AddBlock(upstream);
        rig.driver.AddConnection(*joined);
        rig.m.PDRIVEN.AssignUser(VX_ATTR_VALUE, VX_Value(true, 0));
        rig.Flag("GLOBALRFLOW").AssignUser(VX_ATTR_VALUE, VX_Value(reverse, 0));
        rig.SetUp();
        auto& feed = rig.m.IN_F("F1");
        const VX_SpecType expected = reverse ? VX_SPEC_FREE : VX_SPEC_FIXED;
        for (const VX_Variable* v : std::vector<const VX_Variable*>{&feed.TREV, &feed.HREV, &feed.AVREV, &feed.ZREV("B")})
            EXPECT_EQ(v->CurrSpec(), expected) << v->Path() << (reverse ? " with reverse flow" : "");
        EXPECT_EQ(feed.F.CurrSpec(), VX_SPEC_FREE);
        EXPECT_EQ(upstream.TREV.CurrSpec(), VX_SPEC_FREE);   // only the mixer's own end
    }
}

TEST(InletMixers, UnmatchedBackwardStateStaysFree) {
    Rig<VX_INLETMIXER> rig({"F1"});
    rig.SetUp();
    EXPECT_EQ(rig.m.IN_F("F1").TREV.CurrSpec(), VX_SPEC_FREE);
}

TEST(InletMixers, UnitOperationsOnTheForwardMixerInheritIt) {
    ScopedSession session;
    session->DefineComponentList("AB", {"A", "B"});
    VX_REACTORBASE reactor(true);
    VX_REACTORBASE2 reactor2(true);
    VX_MCOMPRCOOLER cooler(true);
    for (VX_INLETMIXERFWD* m : std::vector<VX_INLETMIXERFWD*>{&reactor, &reactor2, &cooler}) {
        SCOPED_TRACE(m->TypeName());
        EXPECT_TRUE(m->ContainerDerivesFrom("Model INLETMIXERFWD\tV7.0"));
        ASSERT_NE(m->FindProperty("IN_F"), nullptr);
        m->IN_F.AddConnection("F1", nullptr);
        m->IN_F.AddConnection("F2", nullptr);
        VX_ProtocolDriver driver;
        driver.AddBlock(*m);
        ASSERT_GE(LinkGlobals(driver), 0);
        ASSERT_GE(driver.SetDims(), 0);
        ASSERT_GE(driver.ExecuteAssignments(0, VX_CTX_MODEL), 0);
        ASSERT_GE(driver.SetUpEquations(), 0) << driver.LastFailure().message;
        EXPECT_EQ(driver.Rows(), 5);
        EXPECT_EQ(m->NC.fv(), 2);
    }
}

}  // namespace
