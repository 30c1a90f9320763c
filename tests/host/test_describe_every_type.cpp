// describe works on every type with its defaults: every creatable container, every variable
// type and every parameter type that `zorexp types` lists, so that a new type is covered as
// soon as it exists.
#include <gtest/gtest.h>

#include "host_command.hpp"

namespace {

// Type names of one kind from `zorexp types --json`: creatable containers, or the value
// types whose kind is given.
std::vector<std::string> Listed(const std::string& kind) {
    std::vector<std::string> names;
    for (const auto& t : RunHost("types --json").Json())
        if (kind == "container" ? t.value("creatable", false) : t["kind"] == kind) names.push_back(t["name"]);
    return names;
}

// Describes each type with its defaults: status 0 and a JSON report of that type.
void DescribeEach(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        const CommandResult r = RunHost("describe " + name + " --json");
        ASSERT_EQ(r.status, 0) << name << ": " << r.err;
        EXPECT_TRUE(r.err.empty()) << name << ": " << r.err;
        EXPECT_EQ(r.Json()["type"], name);
    }
}

TEST(DescribeEveryType, ContainersWithTheirDefaults) {
    const auto names = Listed("container");
    EXPECT_EQ(names.size(), 147u);
    DescribeEach(names);
}

TEST(DescribeEveryType, VariableTypesWithTheirDefaults) {
    const auto names = Listed("variable type");
    EXPECT_EQ(names.size(), 189u);
    DescribeEach(names);
}

TEST(DescribeEveryType, ParameterTypesWithTheirDefaults) {
    const auto names = Listed("parameter type");
    EXPECT_EQ(names.size(), 124u);
    DescribeEach(names);
}

}  // namespace
