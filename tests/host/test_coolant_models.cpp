#include <gtest/gtest.h>

#include <cmath>

#include "host_command.hpp"

namespace {

using nlohmann::json;

json DescribeJson(const std::string& arguments) {
    const CommandResult r = RunHost("describe " + arguments + " --json");
    EXPECT_EQ(r.status, 0) << arguments << "\n" << r.err;
    return r.status == 0 ? r.Json() : json::object();
}

const json* Find(const json& list, const std::string& name) {
    for (const auto& p : list)
        if (p["name"] == name) return &p;
    return nullptr;
}

// One equation per point: Q_FLUX(i) - (T_PROCESS(i) - T_COOL) * U, with entries for Q_FLUX(i),
// U, T_PROCESS(i) and T_COOL in that order. Element paths exist only once NPTS has sized the
// arrays, and NPTS is given on the same command line.
TEST(CoolantModels, FluxWithOneCoolantTemperature) {
    const json r = DescribeJson(
        "RPLUG_TCOOL1 --set NPTS=2 --set CTYPE=tcool-spec --set 'T_PROCESS(1)=400' --set T_COOL=350 "
        "--set U=2 --set 'q_flux(1)=50'");
    EXPECT_EQ(r["defined"], true);
    const json& eqs = r["equations"];
    ASSERT_EQ(eqs.size(), 3u);   // points 0, 1, 2
    EXPECT_EQ(eqs[0]["label"], "VX_Eqn1");
    EXPECT_EQ(eqs[0]["group"], eqs[2]["group"]);
    EXPECT_DOUBLE_EQ(eqs[1]["residual"].get<double>(), 50.0 - (400.0 - 350.0) * 2.0);
    const json expected = json::array({{{"variable", "Q_FLUX(1)"}, {"jacobian", 1.0}},
                                       {{"variable", "U"}, {"jacobian", -50.0}},
                                       {{"variable", "T_PROCESS(1)"}, {"jacobian", -2.0}},
                                       {{"variable", "T_COOL"}, {"jacobian", 2.0}}});
    EXPECT_EQ(eqs[1]["nonzeros"], expected);

    const json* tCool = Find(r["properties"], "T_COOL");
    ASSERT_NE(tCool, nullptr);
    EXPECT_EQ((*tCool)["spec"], "Fixed");   // the model's own assignment
    EXPECT_EQ((*tCool)["value"], 350.0);
    EXPECT_EQ((*tCool)["type"], "TEMPERATURE");
    const json* tProcess = Find(r["properties"], "T_PROCESS");
    ASSERT_NE(tProcess, nullptr);
    EXPECT_EQ((*tProcess)["kind"], "array");
    ASSERT_EQ((*tProcess)["elements"].size(), 3u);
    EXPECT_EQ((*tProcess)["elements"][1]["name"], "T_PROCESS(1)");
    EXPECT_EQ((*tProcess)["elements"][1]["value"], 400.0);
}

TEST(CoolantModels, ProfileAndNoEquationAlternatives) {
    const json prof = DescribeJson("RPLUG_TCOOL1 --set NPTS=1 --set CTYPE=TCool-Prof --set 'T_COOL_(0)=300' "
                                   "--set 'T_PROCESS(0)=310' --set U=3 --set 'Q_FLUX(0)=0'");
    ASSERT_EQ(prof["equations"].size(), 2u);
    EXPECT_EQ(prof["equations"][0]["label"], "VX_Eqn2");
    EXPECT_DOUBLE_EQ(prof["equations"][0]["residual"].get<double>(), -30.0);
    EXPECT_EQ(prof["equations"][0]["nonzeros"][3]["variable"], "T_COOL_(0)");
    EXPECT_EQ(prof["equations"][0]["nonzeros"][3]["jacobian"], 3.0);

    const json none = DescribeJson("RPLUG_TCOOL1 --set NPTS=4 --set CTYPE=Adiabatic");
    EXPECT_TRUE(none["equations"].empty());
}

TEST(CoolantModels, CellDutiesWithGlobalsAndUserSpecs) {
    const json r = DescribeJson("RPLUG_TCOOL --set NPTS=2 --set L=4 --set DX=2 --free U");
    const json& eqs = r["equations"];
    ASSERT_EQ(eqs.size(), 3u);   // DX = L / NPTS, then one duty per cell
    EXPECT_NEAR(eqs[0]["residual"].get<double>(), 0.0, 1e-12);
    EXPECT_EQ(eqs[2]["nonzeros"][1]["variable"], "T_CELL(1)");   // the second cell's inlet
    const json* u = Find(r["properties"], "U");
    ASSERT_NE(u, nullptr);
    EXPECT_EQ((*u)["spec"], "Free");   // a user spec outranks the model's Fixed
    const json* pi = Find(r["properties"], "PI");
    ASSERT_NE(pi, nullptr);
    EXPECT_NEAR((*pi)["value"].get<double>(), 3.141593, 1e-12);
}

TEST(CoolantModels, TextFormListsPropertiesAndEquations) {
    const CommandResult r = RunHost("describe RPLUG_TCOOL1 --set NPTS=1 --set CTYPE=TCool-Spec");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.rfind("RPLUG_TCOOL1: Model, id \"Model RPLUG_TCOOL1 V7.0\", base GENERICMODEL, content defined\n", 0), 0u)
        << r.out;
    EXPECT_NE(r.out.find("\nProperties\n"), std::string::npos);
    EXPECT_NE(r.out.find("T_PROCESS(1)"), std::string::npos);
    EXPECT_NE(r.out.find("\nEquations\n"), std::string::npos);
    EXPECT_NE(r.out.find("VX_Eqn1"), std::string::npos);
}

TEST(CoolantModels, RefusedAssignmentsNameTypePathValueAndReason) {
    const CommandResult option = RunHost("describe RPLUG_TCOOL1 --set CTYPE=Warm");
    EXPECT_EQ(option.status, 2);
    for (const char* f : {"RPLUG_TCOOL1", "CTYPE", "\"Warm\"", "\"TCool-Spec\"", "\"Adiabatic\""})
        EXPECT_NE(option.err.find(f), std::string::npos) << f << " not in " << option.err;

    const CommandResult kind = RunHost("describe RPLUG_TCOOL1 --set NPTS=2.5");
    EXPECT_EQ(kind.status, 2);
    EXPECT_NE(kind.err.find("NPTS"), std::string::npos) << kind.err;
    EXPECT_NE(kind.err.find("integer"), std::string::npos) << kind.err;

    const CommandResult index = RunHost("describe RPLUG_TCOOL1 --set NPTS=2 --set 'T_PROCESS(3)=1'");
    EXPECT_EQ(index.status, 2);
    EXPECT_NE(index.err.find("T_PROCESS(3)"), std::string::npos) << index.err;
    EXPECT_NE(index.err.find("0, 1, 2"), std::string::npos) << index.err;

    const CommandResult spec = RunHost("describe RPLUG_TCOOL1 --fix NPTS");
    EXPECT_EQ(spec.status, 2);
    EXPECT_NE(spec.err.find("has no spec"), std::string::npos) << spec.err;
}

}  // namespace
