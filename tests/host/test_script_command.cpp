#include <gtest/gtest.h>

#include "host_command.hpp"

namespace {

TEST(ScriptCommand, PrintsTheScriptAsWrittenOrAsJson) {
    const CommandResult text = RunHost("script SIGNALSELECTOR Initialize");
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_EQ(text.out.size(), 321u);
    EXPECT_EQ(text.out.substr(0, 61), "' Initialize controller parameters using steady state values\n");
    EXPECT_EQ(text.out.substr(text.out.size() - 20), "Output_.value = Out\n");

    const CommandResult json = RunHost("script vx_logiccompare initialize --json");
    ASSERT_EQ(json.status, 0) << json.err;
    const auto j = json.Json();
    EXPECT_EQ(j["type"], "LOGICCOMPARE");
    EXPECT_EQ(j["index"], 0);
    EXPECT_EQ(j["length"], 478);
    ASSERT_EQ(j["lines"].size(), 13u);
    EXPECT_EQ(j["lines"][2], "");
    EXPECT_EQ(j["lines"][12], "  Output_.value = 0");
}

TEST(ScriptCommand, UnknownTypeOrScriptIsBadInput) {
    const CommandResult type = RunHost("script SIGNALSELECTR Initialize");
    EXPECT_EQ(type.status, 2);
    EXPECT_EQ(type.err, "zorexp: unknown type \"SIGNALSELECTR\" (zorexp types lists them all)\n");
    const CommandResult name = RunHost("script SIGNALSELECTOR Run");
    EXPECT_EQ(name.status, 2);
    EXPECT_EQ(name.err, "zorexp: SIGNALSELECTOR has no script \"Run\" (it has 1 script)\n");
    const CommandResult none = RunHost("script PSV_VAP Initialize");
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.err, "zorexp: PSV_VAP has no script \"Initialize\" (it has none)\n");
    const CommandResult port = RunHost("script HEATPORT Initialize");
    EXPECT_EQ(port.status, 2);
    EXPECT_NE(port.err.find("HEATPORT is a Port type"), std::string::npos) << port.err;
}

}  // namespace
