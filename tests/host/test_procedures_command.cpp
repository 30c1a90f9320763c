#include <gtest/gtest.h>

#include <set>

#include "host_command.hpp"

namespace {

// The utility routines this project ships (the property routines come with the property package).
const std::set<std::string> kShipped = {"PSQRT", "PPOW", "PDIVIDE", "PLIMIT", "PLIMIT_ABS", "PMIN", "PRAMP",
                                        "PMINRAMP", "PMINRAMPA", "PCOPY1", "PCOPYZ", "PPROD", "PPROD1", "PMULT2D",
                                        "PINT", "PDBAND", "PLMTD", "PGAUSS", "PSOLMODE"};

TEST(ProceduresCommand, ListsEveryDeclarationWithWhetherItsRoutineIsFound) {
    unsetenv("ZOREXP_ROUTINE_PATH");
    const CommandResult r = RunHost("procedures --json");
    ASSERT_EQ(r.status, 0) << r.err;
    const auto list = r.Json();
    ASSERT_EQ(list.size(), 222u);
    std::set<std::string> provided;
    for (const auto& e : list) {
        for (const char* key : {"name", "library", "entry", "version", "language", "derivatives", "component_list", "inputs",
                                "outputs", "provided"})
            EXPECT_TRUE(e.contains(key)) << e["name"] << " " << key;
        EXPECT_FALSE(e.contains("file"));
        for (const auto& arg : e["outputs"]) EXPECT_EQ(arg, (nlohmann::json{{"type", "R"}, {"dims", arg["dims"]}, {"written_back", false}}));
        if (e["provided"]) provided.insert(e["name"]);
    }
    for (const std::string& name : kShipped) EXPECT_TRUE(provided.count(name)) << name;
    for (const char* name : {"PQUORVA", "PSPRMOD", "PPRBS", "PHYDRA"}) EXPECT_FALSE(provided.count(name)) << name;
    // A row as the table gives it: PVTVOL in "Fabrik", R*, R*, S* -> R, derivatives, component list.
    const auto pvtvol = *std::find_if(list.begin(), list.end(), [](const auto& e) { return e["name"] == "PVTVOL"; });
    EXPECT_EQ(pvtvol["inputs"], (nlohmann::json::parse(R"([{"type":"R","dims":0,"written_back":true},
        {"type":"R","dims":0,"written_back":true},{"type":"S","dims":0,"written_back":true}])")));
    EXPECT_EQ(pvtvol["language"], "F");
    EXPECT_TRUE(pvtvol["derivatives"] && pvtvol["component_list"]);
}

TEST(ProceduresCommand, OneDeclarationNamesItsFileOrWhyThereIsNone) {
    unsetenv("ZOREXP_ROUTINE_PATH");
    const auto divide = RunHost("procedures VXProc_PDIVIDE --json").Json();
    const auto copy = RunHost("procedures pcopy1 --json").Json();
    EXPECT_EQ(divide["library"], "Fabrik");
    EXPECT_EQ(copy["library"], "fabrik");
    EXPECT_EQ(divide["file"], copy["file"]);   // two spellings, one file
    EXPECT_NE(divide["file"].get<std::string>().find("/lib/routines/libFabrik.so"), std::string::npos);

    const CommandResult quorva = RunHost("procedures PQUORVA");
    EXPECT_EQ(quorva.status, 0);
    EXPECT_NE(quorva.out.find("Language        C"), std::string::npos) << quorva.out;
    EXPECT_NE(quorva.out.find("Provided        no: libQuorvaif.so not found; searched: /"), std::string::npos) << quorva.out;

    const CommandResult unknown = RunHost("procedures PNOTHING");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err, "zorexp: no procedure declaration named \"PNOTHING\" (zorexp procedures lists them)\n");
}

}  // namespace
