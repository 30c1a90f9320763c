// The port types: what they start with, their bounds and specs, the sets the solid and
// particle ports make from the component list, the port tree, and their multiports.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/all_containers.hpp"
#include "model_driver.hpp"

namespace {

using Names = std::vector<std::string>;

TEST(Ports, AMaterialPortStartsEvenAndWithAVAtOne) {
    ScopedSession session;
    session->DefineComponentList("FOUR", {"A", "B", "C", "D"});
    VX_MATERIALPORT p(true);
    ASSERT_GE(Prepare(p), 0);
    ASSERT_EQ(p.Z.Size(), 4);
    for (const char* c : {"A", "B", "C", "D"}) EXPECT_EQ(p.Z(c).fv(), 0.25) << c;
    EXPECT_EQ(p.AV.fv(), 1.0);
    EXPECT_EQ(p.F.Lower(), 0.0);   // the flow type's own bound
    EXPECT_EQ(p.V.Path(), "V");
}

TEST(Ports, ReverseFlowPortsLetTheFlowRunBackwards) {
    ScopedSession session;
    session->DefineComponentList("TWO", {"A", "B"});
    VX_MATERIALPORTREV rev(true);
    VX_MATERIALPORTRREV rrev(true);
    VX_MATERIALPORTRPREV rprev(true);
    VX_APPORT particles(true);
    for (VX_ModelType* port : std::vector<VX_ModelType*>{&rev, &rrev, &rprev, &particles}) ASSERT_GE(Prepare(*port), 0);
    for (const VX_MATERIALPORT* p : std::vector<const VX_MATERIALPORT*>{&rev, &rrev, &rprev, &particles})
        EXPECT_EQ(p->F.Lower(), -1e8) << p->TypeName();
    EXPECT_EQ(rev.ZREV("B").fv(), 0.5);
    EXPECT_EQ(rprev.AVREV.fv(), 1.0);
    EXPECT_EQ(rrev.SLIP.fv(), 1.0);
}

TEST(Ports, PolymerRateDataMayGoToMinusOne) {
    ScopedSession session;
    VX_MATERIALPORTRP p(true);
    SetUser(p.RSET, VX_Value(VX_IntSetValue(1, 3), 0));
    ASSERT_GE(Prepare(p), 0);
    ASSERT_EQ(p.W.Size(), 3);
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(p.W(i).Lower(), -1.0) << i;
}

TEST(Ports, TheUntypedPolymerPortFixesEverything) {
    ScopedSession session;
    session->DefineComponentList("TWO", {"A", "B"});
    VX_MATERIALPORTRP_SI p(true);
    SetUser(p.SEGMENTS, VX_Value(VX_StrSetValue(Names{"S1", "S2"}), 0));
    SetUser(p.SITES, VX_Value(VX_IntSetValue(1, 2), 0));
    SetUser(p.SITESEGATTS, VX_Value(VX_StrSetValue(Names{"MWN"}), 0));
    ASSERT_GE(Prepare(p), 0);
    EXPECT_STREQ(p.EXPORTAS.fv(), "MoleFractionPort");
    for (const VX_Variable* v : {&static_cast<const VX_Variable&>(p.F), &static_cast<const VX_Variable&>(p.V),
                                 &static_cast<const VX_Variable&>(p.Z("B"))})
        EXPECT_EQ(v->CurrSpec(), VX_SPEC_FIXED) << v->Path();
    ASSERT_EQ(p.POLSITESEG.Size(), 4);
    EXPECT_EQ(p.POLSITESEG("S2", 1, "MWN").CurrSpec(), VX_SPEC_FIXED);
}

TEST(Ports, SolidAttributesRunOverTheComponentsTheListNames) {
    ScopedSession session;
    session->DefineComponentList("COAL", {"COAL", "ASH", "WATER"},
                                 {{"PROXANAL", SUValue("ASH\"COAL\"CHAR\"")}, {"CAUSR2", SUValue("WATER")}});
    VX_SOLIDPORT p(true);
    SetUser(p.CAUSRELEMENTS, VX_Value(VX_StrSetValue(Names{"E1", "E2"}), 0));
    ASSERT_GE(Prepare(p), 0);
    EXPECT_EQ(p.VX_PROXANAL_SET1.fv().Members(), (Names{"ASH", "COAL"}));
    EXPECT_EQ(p.VX_PROXANAL_SET2.fv().Members(), (Names{"MOISTURE", "FC", "VM", "ASH"}));
    EXPECT_EQ(p.PROXANAL.Size(), 8);
    EXPECT_EQ(p.VX_SULFANAL_SET2.fv().Members(), (Names{"PYRITIC", "SULFATE", "ORGANIC"}));
    EXPECT_TRUE(p.VX_ULTANAL_SET1.fv().Empty());   // the list has no ULTANAL option
    EXPECT_EQ(p.ULTANAL.Size(), 0);
    EXPECT_EQ(p.VX_CAUSR2_SET1.fv().Members(), (Names{"WATER"}));
    EXPECT_EQ(p.CAUSR2.Size(), 2);
    EXPECT_EQ(p.CAUSR1.Size(), 0);
}

TEST(Ports, AParticlePortSizesItsDistributionsAndStartsEven) {
    ScopedSession session;
    session->DefineComponentList("COAL", {"COAL", "ASH"}, {{"ULTANAL", SUValue("COAL")}, {"CAUSRELEMENTS", SUValue("D1\"D2\"")},
                                                           {"CAUSRA", SUValue("ASH")}});
    VX_APPORT p(true);
    SetUser(p.NCSOLID, VX_Value(VX_IntSetValue(1, 2), 0));
    SetUser(p.CISOLID, VX_Value(VX_IntSetValue(1, 1), 0));
    SetUser(p.PSDCI, VX_Value(4, 0));
    ASSERT_GE(Prepare(p), 0);
    EXPECT_EQ(p.PSDNC.fv(), 10);
    EXPECT_EQ(p.PSD_NC.Size(), 20);
    EXPECT_EQ(p.PSD_NC(2, 10).fv(), 0.1);
    EXPECT_EQ(p.PSD_CI(1, 4).fv(), 0.25);   // the user's count of intervals wins
    EXPECT_EQ(p.ZM_NC(1, "ASH").fv(), 0.5);
    EXPECT_EQ(p.Z_CI(1, "COAL").fv(), 0.5);
    EXPECT_EQ(p.ULTANAL.Size(), 2 * 1 * 7);   // substreams x components with the analysis x elements
    EXPECT_EQ(p.CAUSRA.Size(), 1 * 1 * 2);
    EXPECT_EQ(p.CAUSR1.Size(), 0);
}

TEST(Ports, TheTreeAnswersForEveryAncestorInAnyCase) {
    VX_APPORT particles(true);
    for (const char* id : {"Port MATERIALPORTRP\tV7.0", "port materialportrp\tv7.0", "Port MATERIALPORTRPREV\tV7.0",
                           "Port MATERIALPORTR\tV7.0", "Port MATERIALPORT\tV7.0", "Port MOLEFRACTIONPORT\tV7.0",
                           "Port MAINPORT\tV7.0", "Port GENERICPORT\tV7.0", "Port APPORT\tV7.0"})
        EXPECT_TRUE(particles.ContainerDerivesFrom(id)) << id;
    EXPECT_FALSE(particles.ContainerDerivesFrom("Port MATERIALPORTRP"));   // without tab and version
    EXPECT_FALSE(particles.ContainerDerivesFrom("Port SOLIDPORT\tV7.0"));

    VX_MATERIALPORTRP_SI untyped(true);
    EXPECT_TRUE(untyped.ContainerDerivesFrom("Port GENERICPORT\tV7.0"));
    for (const char* id : {"Port MATERIALPORT\tV7.0", "Port MAINPORT\tV7.0", "Port MATERIALPORTRP\tV7.0"})
        EXPECT_FALSE(untyped.ContainerDerivesFrom(id)) << id;
    EXPECT_STREQ(VX_HEATPORT(true).VX_DefaultDESCRIPTION(), "Port HEATPORT\tV7.0");
}

// Every port type has its three multiports, whose connections are ports of that type.
template <class Port, class In, class Out, class Both>
void ExpectMultiports() {
    In in(true);
    Out out(true);
    Both both(true);
    EXPECT_EQ(in.Direction(), 4);
    EXPECT_EQ(out.Direction(), 8);
    EXPECT_EQ(both.Direction(), 12);
    VX_PortType* made = both.AddConnection("ONE", nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_NE(dynamic_cast<Port*>(made), nullptr);
    EXPECT_EQ(made->PortDirection(), 12);
}

#define VX_EXPECT_MULTIPORTS(PORT) ExpectMultiports<VX_##PORT, VX_MI##PORT, VX_MO##PORT, VX_MIO##PORT>();

TEST(Ports, EveryPortTypeHasItsThreeMultiports) {
    ScopedSession session;
    VX_EXPECT_MULTIPORTS(APPORT)
    VX_EXPECT_MULTIPORTS(HEATPORT)
    VX_EXPECT_MULTIPORTS(MAINPORT)
    VX_EXPECT_MULTIPORTS(MATERIALPORT)
    VX_EXPECT_MULTIPORTS(MATERIALPORTR)
    VX_EXPECT_MULTIPORTS(MATERIALPORTREV)
    VX_EXPECT_MULTIPORTS(MATERIALPORTREV_EXT)
    VX_EXPECT_MULTIPORTS(MATERIALPORTRP)
    VX_EXPECT_MULTIPORTS(MATERIALPORTRPREV)
    VX_EXPECT_MULTIPORTS(MATERIALPORTRP_SI)
    VX_EXPECT_MULTIPORTS(MATERIALPORTRREV)
    VX_EXPECT_MULTIPORTS(MATERIALPORT_EXT)
    VX_EXPECT_MULTIPORTS(MOLEFRACTIONPORT)
    VX_EXPECT_MULTIPORTS(SOLIDPORT)
    VX_EXPECT_MULTIPORTS(WORKPORT)
}

}  // namespace
