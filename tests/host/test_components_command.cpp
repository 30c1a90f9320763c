#include <gtest/gtest.h>

#include <cstdlib>

#include "host_command.hpp"

namespace {

TEST(ComponentsCommand, ListsTheDatabaseAndOneComponentWithUnitsAndSources) {
    const CommandResult all = RunHost("components --json");
    ASSERT_EQ(all.status, 0) << all.err;
    EXPECT_GE(all.Json()["components"].size(), 40u);

    const CommandResult water = RunHost("components h2o --json");
    ASSERT_EQ(water.status, 0) << water.err;
    const auto w = water.Json();
    EXPECT_EQ(w["id"], "WATER");
    bool sawTc = false;
    for (const auto& d : w["data"]) {
        EXPECT_FALSE(d["unit"].get<std::string>().empty()) << d.dump();
        EXPECT_FALSE(d["source"].get<std::string>().empty()) << d.dump();
        if (d["quantity"] == "critical_temperature") sawTc = d["value"] == 647.1 && d["unit"] == "K";
    }
    EXPECT_TRUE(sawTc);

    // What a component lacks is said, not filled in.
    const CommandResult nonane = RunHost("components N-NONANE");
    ASSERT_EQ(nonane.status, 0) << nonane.err;
    EXPECT_NE(nonane.out.find("Not in the database: ideal_gas_heat_capacity, formation_enthalpy, formation_gibbs_energy"), std::string::npos) << nonane.out;
}

TEST(ComponentsCommand, UnknownIdIsRefusedWithSuggestionsAndAMissingDatabaseIsNamed) {
    const CommandResult typo = RunHost("components TOLUOL");
    EXPECT_EQ(typo.status, 2);
    EXPECT_EQ(typo.err, "zorexp: unknown component \"TOLUOL\" (did you mean TOLUENE?)\n");
    setenv("ZOREXP_COMPONENT_DATABASE", "/nonexistent/components.json", 1);
    const CommandResult moved = RunHost("components");
    unsetenv("ZOREXP_COMPONENT_DATABASE");
    EXPECT_EQ(moved.status, 1);
    EXPECT_NE(moved.err.find("/nonexistent/components.json: cannot be read"), std::string::npos) << moved.err;
}

}  // namespace
