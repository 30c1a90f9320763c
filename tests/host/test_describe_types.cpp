#include <gtest/gtest.h>

#include "host_command.hpp"

namespace {

nlohmann::json Describe(const std::string& type) {
    const CommandResult r = RunHost("describe " + type + " --json");
    EXPECT_EQ(r.status, 0) << r.err;
    return r.status == 0 ? r.Json() : nlohmann::json::object();
}

TEST(DescribeVariableType, MixesOwnAndInheritedAttributes) {
    const auto t = Describe("FLOW_MOL_VAP_REV");
    EXPECT_EQ(t["class"], "VX_FLOW_MOL_VAP_REV");
    EXPECT_EQ(t["kind"], "variable type");
    EXPECT_EQ(t["base"], "FLOW_MOL_REV");
    EXPECT_EQ(t["value"], 10.0);
    EXPECT_EQ(t["lower"], -1e10);     // its own
    EXPECT_EQ(t["upper"], 1e10);
    EXPECT_EQ(t["quantity"], "MoleFlow");   // from FLOW_MOL, two levels up
    EXPECT_EQ(t["unit"], "kmol/hr");
    EXPECT_EQ(t["row"], 11);
    EXPECT_EQ(t["col"], 3);
    EXPECT_FALSE(t.contains("valid"));
}

TEST(DescribeVariableType, PrefixAndCaseDoNotMatterAndMissingUnitsAreLeftOut) {
    const auto t = Describe("vx_act_coeff");
    EXPECT_EQ(t["type"], "ACT_COEFF");
    EXPECT_EQ(t["upper"], 30.0);
    EXPECT_FALSE(t.contains("unit"));
    EXPECT_FALSE(t.contains("row"));
    EXPECT_FALSE(t.contains("col"));
    // Inherits from the runtime root only: the runtime's defaults.
    const auto c = Describe("COMPONENTATTRIBUTE");
    EXPECT_EQ(c["value"], 1e35);
    EXPECT_EQ(c["lower"], -1e35);
}

TEST(DescribeParameterType, OptionsListTheirValidValuesInStoredOrder) {
    const auto yes = Describe("YESNO");
    EXPECT_EQ(yes["kind"], "parameter type");
    EXPECT_EQ(yes["base"], "STRINGPARAMETER");
    EXPECT_EQ(yes["value"], "Yes");
    EXPECT_EQ(yes["valid"], nlohmann::json({"No", "Yes"}));

    const auto pol = Describe("POLKINETICSTYPE");
    EXPECT_EQ(pol["valid"], nlohmann::json({"", "Free-Radical", "Zeigler Natta"}));

    const auto comps = Describe("COMPONENTS");   // supplied at run time: empty, still present
    EXPECT_EQ(comps["valid"], nlohmann::json::array());
    EXPECT_FALSE(comps.contains("value"));
}

TEST(DescribeParameterType, IntegerRealAndLogicalTypes) {
    const auto holdup = Describe("HOLDUPBASIS");
    EXPECT_EQ(holdup["value"], 1);
    EXPECT_EQ(holdup["valid"], nlohmann::json({1, 2, 3}));
    EXPECT_FALSE(holdup.contains("lower"));   // unbounded

    const auto sections = Describe("NUMSECTIONSPARAM");
    EXPECT_EQ(sections["lower"], 1);
    EXPECT_FALSE(sections.contains("upper"));

    const auto scaler = Describe("TIMESCALERPARAMETER");
    EXPECT_EQ(scaler["value"], 3600.0);
    EXPECT_EQ(scaler["description"], "Seconds per model time unit");

    EXPECT_EQ(Describe("DISCHARGEAREACALCTYPE")["value"], false);
}

TEST(DescribeParameterType, TextFormNamesEveryField) {
    const CommandResult r = RunHost("describe CPMASSPARAM");
    ASSERT_EQ(r.status, 0) << r.err;
    for (const char* line : {"type        CPMASSPARAM\n", "kind        parameter type\n", "unit        kJ/kg/K\n",
                             "row         49\n"})
        EXPECT_NE(r.out.find(line), std::string::npos) << line << "in\n" << r.out;
}

}  // namespace
