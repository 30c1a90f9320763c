#include <gtest/gtest.h>
#include <algorithm>

#include "host_command.hpp"

namespace {

const std::string kSelector = std::string(ZX_EXAMPLES_DIR) + "/signal_selector.json";

TEST(SweepCommand, ReportsEveryPointWithAProgressLineEach) {
    const CommandResult r = RunHost("sweep " + kSelector + " --vary SEL.SELSIG=0.5:3.5:6 --json");
    ASSERT_EQ(r.status, 0) << r.err;
    const auto j = r.Json();
    EXPECT_EQ(j["vary"], "SEL.SELSIG");
    ASSERT_EQ(j["points"].size(), 7u);
    const auto& names = j["variables"];
    const auto output = std::find(names.begin(), names.end(), "SEL.OUTPUT_") - names.begin();
    const double expected[] = {0, 10, 0, 20, 0, 30, 0};   // 0.5, 1.0, 1.5, ... 3.5
    for (std::size_t k = 0; k < 7; ++k) {
        EXPECT_EQ(j["points"][k]["status"], "converged");
        EXPECT_EQ(j["points"][k]["values"][output], expected[k]) << k;
    }
    EXPECT_NE(r.err.find("point 7/7: SEL.SELSIG = 3.5: converged in"), std::string::npos) << r.err;
}

TEST(SweepCommand, APathThatCannotBeVariedIsBadInput) {
    const CommandResult free = RunHost("sweep " + kSelector + " --vary SEL.OUTPUT_=0:1:2");
    EXPECT_EQ(free.status, 2);
    EXPECT_EQ(free.err, "--vary: sweep path \"SEL.OUTPUT_\": OUTPUT_ of block SEL (SIGNALSELECTOR) is a free variable; "
                        "a sweep varies a fixed variable or a real parameter\n");
    const CommandResult option = RunHost("sweep " + kSelector + " --vary SEL.NSIGNAL=1:3:2");
    EXPECT_EQ(option.status, 2);
    EXPECT_NE(option.err.find("NSIGNAL of block SEL (SIGNALSELECTOR) is not a real value"), std::string::npos) << option.err;
    EXPECT_EQ(RunHost("sweep " + kSelector + " --vary SEL.SELSIG=1:2").status, 2);
}

}  // namespace
