// Values with units in flowsheet files and on the command line, and results printed in chosen
// units, through the host command as users run it.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <unistd.h>

#include "host_command.hpp"

namespace {

const std::string kCoolant = std::string(ZX_EXAMPLES_DIR) + "/coolant_profile.json";

// The coolant example with its values written as given (one JSON text per property).
std::string CoolantSheet(const std::string& process, const std::string& coolant, const std::string& u) {
    return R"({"components": {"feed": ["ETHYLENE", "OXYGEN", "ETHYLENE-OXIDE", "CO2", "WATER"]},
  "blocks": {"WALL": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 8, "CTYPE": "TCool-Prof",
    "T_PROCESS": )" + process + R"(,
    "T_COOL_": )" + coolant + R"(,
    "U": )" + u + "}}}}";
}

// The example's values in other units: process temperatures in F, coolant ones in K as texts,
// the coefficient in W/m2/K.
const std::string kProcessInF = R"({"value": [482, 503.6, 519.8, 528.8, 532.4, 530.6, 525.2, 518, 509], "unit": "F", "spec": "Fixed"})";
const std::string kCoolantInK =
    R"({"value": ["493.15 K", "496.15 K", "499.15 K", "502.15 K", "504.15 K", "506.15 K", "507.15 K", "508.15 K", "509.15 K"], "spec": "Fixed"})";
const std::string kUInW = R"({"value": 350, "unit": "W/m2/K", "spec": "Fixed"})";

class TempFile {
public:
    explicit TempFile(const std::string& text) {
        char name[] = "/tmp/zorexp_units_XXXXXX";
        const int fd = mkstemp(name);
        if (fd >= 0) close(fd);
        m_path = name;
        std::ofstream(m_path) << text;
    }
    ~TempFile() { std::remove(m_path.c_str()); }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

void ExpectSameValues(const nlohmann::json& a, const nlohmann::json& b) {
    ASSERT_EQ(a.size(), b.size());
    for (const auto& [path, value] : a.items())
        EXPECT_NEAR(value.get<double>(), b.at(path).get<double>(), 1e-9 * std::max(1.0, std::fabs(value.get<double>()))) << path;
}

TEST(UnitsInCommands, FileValuesInOtherUnitsSolveAsTheExampleInBaseUnits) {
    const CommandResult base = RunHost("solve " + kCoolant + " --json --no-log");
    ASSERT_EQ(base.status, 0) << base.err;
    const TempFile sheet(CoolantSheet(kProcessInF, kCoolantInK, kUInW));
    const CommandResult converted = RunHost("solve " + sheet.Path() + " --json --no-log");
    ASSERT_EQ(converted.status, 0) << converted.err;
    ExpectSameValues(base.Json()["blocks"]["WALL"], converted.Json()["blocks"]["WALL"]);
    // The same from the command line, over the example's own values.
    const CommandResult set = RunHost("solve " + kCoolant + " --json --no-log --set 'WALL.U=350 W/m2/K' --set 'WALL.T_PROCESS(0)=523.15 K'");
    ASSERT_EQ(set.status, 0) << set.err;
    ExpectSameValues(base.Json()["blocks"]["WALL"], set.Json()["blocks"]["WALL"]);
}

TEST(UnitsInCommands, FileValuesThatDoNotFitAreRefusedNamingWhatWould) {
    struct Case {
        std::string process, coolant, u, message;
    };
    const Case cases[] = {
        {kProcessInF, kCoolantInK, R"({"value": 0.35, "unit": "psi", "spec": "Fixed"})",
         "/blocks/WALL/set/U/value: WALL.U: 0.35 psi: unit \"psi\" does not fit HeatTransferCoeff (it accepts W/m2/K, kW/m2/K, Btu/hr/ft2/R)"},
        // An interval is not a temperature.
        {R"({"value": 250, "unit": "delta_degC", "spec": "Fixed"})", kCoolantInK, kUInW,
         "WALL.T_PROCESS: 250 delta_degC: unit \"delta_degC\" does not fit Temperature (it accepts K, C, °C, degC, F"},
        {kProcessInF, R"(["220 C", "223 bar", "226 C", "229 C", "231 C", "233 C", "234 C", "235 C", "236 C"])", kUInW,
         "/blocks/WALL/set/T_COOL_/1: WALL.T_COOL_(1): \"223 bar\": unit \"bar\" does not fit Temperature"},
        {kProcessInF, R"({"value": "220 K", "unit": "C"})", kUInW, "\"220 K\" is in K, but \"unit\" says C"},
        {kProcessInF, kCoolantInK, R"({"value": 350, "unit": 1})", "WALL.U: \"unit\" must be a unit text such as \"K\", not 1"},
    };
    for (const Case& c : cases) {
        const TempFile sheet(CoolantSheet(c.process, c.coolant, c.u));
        const CommandResult r = RunHost("solve " + sheet.Path() + " --no-log");
        EXPECT_EQ(r.status, 2) << c.message;
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
    }
    // Options and integers take no unit, in a file or on the command line.
    const CommandResult option = RunHost("solve " + kCoolant + " --no-log --set 'WALL.CTYPE={\"value\": \"TCool-Prof\", \"unit\": \"K\"}'");
    EXPECT_EQ(option.status, 2);
    EXPECT_NE(option.err.find("a unit is given, but this value takes none"), std::string::npos) << option.err;
    const CommandResult integer = RunHost("describe RPLUG_TCOOL1 --set 'NPTS=2 K'");
    EXPECT_EQ(integer.status, 2);
    EXPECT_NE(integer.err.find("NPTS expects an integer, got text \"2 K\""), std::string::npos) << integer.err;
}

TEST(UnitsInCommands, DescribeAndSweepTakeValuesWithUnits) {
    const CommandResult r = RunHost("describe RPLUG_TCOOL1 --set NPTS=1 --set 'T_PROCESS(1)=212 F' --set 'T_COOL_(0)=300 K' --json");
    ASSERT_EQ(r.status, 0) << r.err;
    std::map<std::string, double> values;
    const nlohmann::json report = r.Json();
    for (const auto& p : report["properties"])
        for (const auto& e : p.value("elements", nlohmann::json::array())) values[e["name"]] = e["value"];
    EXPECT_NEAR(values["T_PROCESS(1)"], 100.0, 1e-12);
    EXPECT_NEAR(values["T_COOL_(0)"], 26.85, 1e-12);
    const CommandResult refused = RunHost("describe RPLUG_TCOOL1 --set NPTS=1 --set 'T_PROCESS(1)=300 psi'");
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err,
              "zorexp: RPLUG_TCOOL1: --set T_PROCESS(1)=300 psi refused: 300 psi: unit \"psi\" does not fit Temperature (it accepts "
              "K, C, °C, degC, F, °F, degF, R, °R, degR)\n");

    const std::string selector = std::string(ZX_EXAMPLES_DIR) + "/signal_selector.json";
    const CommandResult unknown = RunHost("sweep " + selector + " --vary SEL.SELSIG=0.5:3.5:6 --set 'NOPE.X=1'");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err, "--set NOPE.X=1: the flowsheet has no block \"NOPE\"\n");
}

TEST(UnitsInCommands, ResultsInChosenUnitsSayWhichUnitEachValueIsIn) {
    const CommandResult base = RunHost("solve " + kCoolant + " --json --no-log");
    const CommandResult si = RunHost("solve " + kCoolant + " --json --no-log --units SI");
    ASSERT_EQ(si.status, 0) << si.err;
    const auto b = base.Json()["blocks"]["WALL"], s = si.Json()["blocks"]["WALL"], units = si.Json()["units"]["WALL"];
    EXPECT_FALSE(base.Json().contains("units"));
    EXPECT_NEAR(s["T_PROCESS(0)"].get<double>(), b["T_PROCESS(0)"].get<double>() + 273.15, 1e-9);
    EXPECT_NEAR(s["Q_FLUX(3)"].get<double>(), b["Q_FLUX(3)"].get<double>() * 1000.0, 1e-9);
    EXPECT_EQ(units["T_PROCESS(0)"], "K");
    EXPECT_EQ(units["Q_FLUX(3)"], "W/m2");
    EXPECT_EQ(units["U"], "W/m2/K");

    // A quantity named on its own wins over the system, in text and CSV as in JSON.
    char csvName[] = "/tmp/zorexp_units_csvXXXXXX";
    const int fd = mkstemp(csvName);
    if (fd >= 0) close(fd);
    const CommandResult field = RunHost("solve " + kCoolant + " --no-log --units 'field, temperature=K' --csv " + csvName);
    ASSERT_EQ(field.status, 0) << field.err;
    EXPECT_NE(field.out.find("T_PROCESS(0)       523.15  K "), std::string::npos) << field.out;
    EXPECT_NE(field.out.find("Btu/hr/ft2"), std::string::npos) << field.out;
    std::ifstream csv(csvName);
    const std::string rows((std::istreambuf_iterator<char>(csv)), std::istreambuf_iterator<char>());
    std::remove(csvName);
    EXPECT_NE(rows.find("WALL,T_PROCESS(0),523.14999999999998,K,Fixed\n"), std::string::npos) << rows;

    const std::pair<const char*, const char*> refused[] = {
        {"Temperature=psi", "--units Temperature=psi: unit \"psi\" does not fit Temperature (it accepts K, C,"},
        {"Tempo=K", "--units Tempo=K: unknown quantity \"Tempo\""},
        {"metric", "--units metric: expected SI, field or QUANTITY=UNIT"},
        {"''", "zorexp: --units: give SI, field or QUANTITY=UNIT"},
        {"SI,", "--units SI,: an item between commas is empty"},
    };
    for (const auto& [choice, message] : refused) {
        const CommandResult r = RunHost("solve " + kCoolant + " --no-log --units " + choice);
        EXPECT_EQ(r.status, 2) << choice;
        EXPECT_EQ(r.err.rfind(message, 0), 0u) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
}

TEST(UnitsInCommands, TheUnitsCommandListsQuantitiesAndRefusesUnknownOnes) {
    const CommandResult all = RunHost("units --json");
    ASSERT_EQ(all.status, 0) << all.err;
    bool pressure = false;
    const nlohmann::json listing = all.Json();
    for (const auto& q : listing["quantities"])
        if (q["quantity"] == "PressureDifference") pressure = q["units_of"] == "Pressure" && q["units"][0]["unit"] == "Pa";
    EXPECT_TRUE(pressure);
    const CommandResult one = RunHost("units temperaturedifference");
    ASSERT_EQ(one.status, 0) << one.err;
    EXPECT_NE(one.out.find("delta_degF"), std::string::npos) << one.out;
    const CommandResult unknown = RunHost("units Warmth");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.err.find("unknown quantity \"Warmth\" (the quantities are Angle, AngularVelocity"), std::string::npos) << unknown.err;
}

}  // namespace
