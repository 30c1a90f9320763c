// describe works on every type with its defaults: every creatable container, every variable
// type and every parameter type that `zorexp types` lists, so that a new type is covered as
// soon as it exists.
#include <gtest/gtest.h>

#include <set>

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
void DescribeEach(const std::vector<std::string>& names, const std::set<std::string>& failingForNow = {}) {
    for (const std::string& name : names) {
        const CommandResult r = RunHost("describe " + name + " --json");
        if (failingForNow.count(name)) {
            EXPECT_NE(r.status, 0) << name << " now describes with its defaults: take it off the list of failures";
            continue;
        }
        ASSERT_EQ(r.status, 0) << name << ": " << r.err;
        EXPECT_TRUE(r.err.empty()) << name << ": " << r.err;
        EXPECT_EQ(r.Json()["type"], name);
    }
}

TEST(DescribeEveryType, ContainersWithTheirDefaults) {
    const auto names = Listed("container");
    EXPECT_EQ(names.size(), 147u);
    // RPLUG_TCOOL's equations reach Q(1) while its default NPTS of 0 gives Q no elements; its
    // model content is being corrected, after which this list is empty.
    DescribeEach(names, {"RPLUG_TCOOL"});
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
