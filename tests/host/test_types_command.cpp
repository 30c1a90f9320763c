#include <gtest/gtest.h>

#include <map>
#include <set>

#include "host_command.hpp"

namespace {

TEST(TypesCommand, ListsEveryContainerAndValueTypeConsistently) {
    const CommandResult r = RunHost("types --json");
    ASSERT_EQ(r.status, 0) << r.err;
    const auto list = r.Json();
    ASSERT_TRUE(list.is_array());

    std::map<std::string, int> kinds;
    std::set<std::string> names;
    for (const auto& t : list) {
        const std::string name = t["name"], kind = t["kind"];
        EXPECT_TRUE(names.insert(name).second) << "listed twice: " << name;
        ++kinds[kind];
        if (kind == "Model" || kind == "Structure" || kind == "Port") {
            EXPECT_EQ(t["id"], kind + " " + name + "\tV7.0");
            EXPECT_TRUE(t["defined"].is_boolean()) << name;
            EXPECT_EQ(t["creatable"], kind != "Port") << name;
        } else {
            EXPECT_TRUE(kind == "variable type" || kind == "parameter type") << name << ": " << kind;
            EXPECT_FALSE(t.contains("id")) << name;
        }
    }
    EXPECT_EQ(kinds["Model"], 129);
    EXPECT_EQ(kinds["Structure"], 18);
    EXPECT_EQ(kinds["Port"], 15);
    EXPECT_EQ(kinds["variable type"], 189);
    EXPECT_EQ(kinds["parameter type"], 124);

    // A base is a type listed before the one derived from it, or a runtime or generic root.
    const std::set<std::string> roots = {"GENERICMODEL", "GENERICSTREAM", "GENERICPORT", "GENERICSTRUCTURE",
                                         "REALVARIABLE", "INTEGERPARAMETER", "REALPARAMETER",
                                         "LOGICALPARAMETER", "STRINGPARAMETER"};
    std::set<std::string> seen;
    for (const auto& t : list) {
        const std::string base = t["base"];
        EXPECT_TRUE(roots.count(base) || seen.count(base)) << t["name"] << " derives from " << base;
        seen.insert(t["name"].get<std::string>());
    }
}

TEST(TypesCommand, TextListingHasOneLinePerTypeUnderItsHeader) {
    const CommandResult text = RunHost("types");
    ASSERT_EQ(text.status, 0) << text.err;
    const std::size_t lines = static_cast<std::size_t>(std::count(text.out.begin(), text.out.end(), '\n'));
    EXPECT_EQ(lines, RunHost("types --json").Json().size() + 2);   // header and rule
    EXPECT_EQ(text.out.rfind("Type", 0), 0u);
}

}  // namespace
