#include <gtest/gtest.h>

#include "host_command.hpp"

namespace {

// A creatable container whose content is not defined yet, or "" when every one is defined.
std::string SomeUndefinedContainer() {
    for (const auto& t : RunHost("types --json").Json())
        if (t.value("creatable", false) && !t["defined"].get<bool>()) return t["name"];
    return "";
}

TEST(DescribeContainer, UndefinedContentIsSaidPlainly) {
    const std::string name = SomeUndefinedContainer();
    if (name.empty()) GTEST_SKIP() << "every container is defined";
    const CommandResult json = RunHost("describe " + name + " --json");
    ASSERT_EQ(json.status, 0) << json.err;
    const auto r = json.Json();
    EXPECT_EQ(r["type"], name);
    EXPECT_EQ(r["defined"], false);
    EXPECT_TRUE(r["equations"].empty());

    const CommandResult text = RunHost("describe " + name);
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("content not defined yet: no properties or equations"), std::string::npos) << text.out;
}

TEST(DescribeContainer, PortsAreNotCreatable) {
    const CommandResult r = RunHost("describe MATERIALPORT --json");
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(r.out.empty());
    EXPECT_NE(r.err.find("MATERIALPORT is a Port type"), std::string::npos) << r.err;
}

}  // namespace
