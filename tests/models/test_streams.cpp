// Heat, work and material streams: their copies are fixed when nothing is upstream and free
// when something is, one equation per carried variable and port, in their groups; their ports
// are registered as inlet and outlet and told they belong to a stream.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "model_driver.hpp"
#include "models/streams/heatstream.hpp"
#include "models/streams/materialstream.hpp"
#include "models/streams/workstream.hpp"

namespace {

std::unique_ptr<VX_Connection> Join(VX_PortType& from, VX_PortType& to) {
    std::string why;
    std::unique_ptr<VX_Connection> c(VX_Connection::Make(from, to, &why));
    EXPECT_TRUE(c) << why;
    return c;
}

int FlagsOf(const VX_Container& c, const char* name) {
    for (const VX_PropertyEntry& p : c.Properties())
        if (std::string(p.name) == name) return p.flags;
    return -1;
}

TEST(Streams, AHeatStreamFixesItsDutyOnlyWithNothingUpstream) {
    ScopedSession session;
    VX_HEATSTREAM upstream(true), s(true);
    ASSERT_GE(Prepare(s), 0);
    EXPECT_EQ(s.Q.CurrSpec(), VX_SPEC_FIXED);
    const Pattern p = DeclareEquations(s, *session, 10);
    ASSERT_EQ(p.setUpResult, 2);
    ASSERT_EQ(s.Groups().size(), 2u);
    EXPECT_EQ(s.Groups()[0].group, 11);
    EXPECT_EQ(s.Groups()[1].group, 12);
    s.Q.SetSolverValue(5.0);
    s.IN_HS.Q.SetSolverValue(2.0);
    s.OUT_HS.Q.SetSolverValue(7.0);
    std::vector<double> r(2), v(4);
    EXPECT_EQ(s.Residuals(r.data(), 0, 0), 2);
    EXPECT_EQ(r, (std::vector<double>{3.0, 2.0}));   // Q - IN_HS.Q, OUT_HS.Q - Q
    EXPECT_EQ(s.Jacobian(v.data(), 0, 0), 4);
    EXPECT_EQ(v, (std::vector<double>{1.0, -1.0, 1.0, -1.0}));

    const auto joined = Join(upstream.OUT_HS, s.IN_HS);
    ASSERT_GE(Prepare(s), 0);
    EXPECT_EQ(s.Q.CurrSpec(), VX_SPEC_FREE);
}

TEST(Streams, PortsAreRegisteredAsInletAndOutletOfAStream) {
    VX_HEATSTREAM h(true);
    VX_WORKSTREAM w(true);
    VX_MATERIALSTREAM m(true);
    EXPECT_EQ(FlagsOf(h, "IN_HS"), 4);
    EXPECT_EQ(FlagsOf(h, "OUT_HS"), 8);
    EXPECT_EQ(FlagsOf(w, "IN_WS"), 4);
    EXPECT_EQ(FlagsOf(w, "OUT_WS"), 8);
    EXPECT_EQ(FlagsOf(m, "OUT_F"), 8);
    EXPECT_EQ(FlagsOf(h, "Q"), 0);
    for (const VX_GENERICPORT* p : std::vector<const VX_GENERICPORT*>{&h.IN_HS, &h.OUT_HS, &w.IN_WS, &w.OUT_WS, &m.IN_F, &m.OUT_F})
        EXPECT_EQ(p->HostPortTypeValue(), 2) << p->Path();
    EXPECT_EQ(m.IN_F.PortDirection(), 4);
}

TEST(Streams, AWorkStreamRunsAt3600EitherWayAndAnswersPerGroup) {
    ScopedSession session;
    VX_WORKSTREAM upstream(true), s(true);
    const auto joined = Join(upstream.OUT_WS, s.IN_WS);
    for (VX_WORKSTREAM* w : {&upstream, &s}) ASSERT_GE(Prepare(*w), 0);
    EXPECT_EQ(upstream.SPEED.fv(), 3600.0);
    EXPECT_EQ(s.SPEED.fv(), 3600.0);
    EXPECT_EQ(upstream.W.CurrSpec(), VX_SPEC_FIXED);
    EXPECT_EQ(upstream.SPEED.CurrSpec(), VX_SPEC_FIXED);
    EXPECT_EQ(s.SPEED.CurrSpec(), VX_SPEC_FREE);

    ASSERT_EQ(DeclareEquations(s, *session, 0).setUpResult, 4);
    s.SPEED.SetSolverValue(3000.0);
    s.IN_WS.SPEED.SetSolverValue(2900.0);
    std::vector<double> r(4, -7.0);
    EXPECT_EQ(s.Residuals(r.data(), 3, 0), 4);   // the block's end, having written group 3 only
    EXPECT_EQ(r, (std::vector<double>{-7.0, -7.0, 100.0, -7.0}));
    std::vector<double> v(8, -7.0);
    EXPECT_EQ(s.Jacobian(v.data(), 4, 0), 8);
    EXPECT_EQ(v, (std::vector<double>{-7.0, -7.0, -7.0, -7.0, -7.0, -7.0, 1.0, -1.0}));
}

TEST(Streams, AMaterialStreamCarriesEveryVariableOfAMaterialPort) {
    ScopedSession session;
    session->DefineComponentList("THREE", {"A", "B", "C"});
    VX_MATERIALSTREAM s(true);
    ASSERT_GE(Prepare(s), 0);
    EXPECT_EQ(s.Z("C").fv(), 1.0 / 3.0);
    for (const VX_Variable* v : std::vector<const VX_Variable*>{&s.F, &s.Z("B"), &s.T, &s.P, &s.H, &s.V, &s.AV})
        EXPECT_EQ(v->CurrSpec(), VX_SPEC_FIXED) << v->Path();
    const Pattern p = DeclareEquations(s, *session, 0);
    EXPECT_EQ(p.setUpResult, 2 * (6 + 3));
    // Every variable of the outlet port is one of the stream's entries: a connection matches all.
    std::vector<std::string> columns;
    for (int c : p.cols) columns.push_back(session->Columns()[static_cast<std::size_t>(c)]->Path());
    for (const VX_PropertyEntry& e : s.OUT_F.Properties()) {
        auto* array = dynamic_cast<VX_Matrix*>(e.object);
        if (!array && !dynamic_cast<VX_Variable*>(e.object)) continue;
        const std::string name = std::string("OUT_F.") + e.name + (array ? "(A)" : "");
        EXPECT_NE(std::find(columns.begin(), columns.end(), name), columns.end()) << name;
    }
}

}  // namespace
