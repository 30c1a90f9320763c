// The registry table: what the generators and the host rely on. (The counts are checked
// against the library's exports in test_exports.cpp.)
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "frame/registry.hpp"

TEST(Registry, EveryBaseIsAnEarlierRowOfTheSameKindOrAGenericBase) {
    const std::map<std::string, std::string> genericKind{{"GENERICMODEL", "Model"}, {"GENERICSTREAM", "Model"},
                                                         {"GENERICPORT", "Port"}, {"GENERICSTRUCTURE", "Structure"}};
    std::set<std::string> seen;
    for (const VX_RegistryEntry& e : VX_RegistryEntries()) {
        SCOPED_TRACE(e.name);
        if (auto g = genericKind.find(e.base); g != genericKind.end()) {
            EXPECT_EQ(g->second, e.kind);
        } else {
            EXPECT_TRUE(seen.count(e.base)) << "base " << e.base << " is not an earlier row";
            EXPECT_STREQ(VX_RegistryFind(e.base)->kind, e.kind);
        }
        EXPECT_TRUE(seen.insert(e.name).second) << "duplicate row";
        EXPECT_EQ(std::string(e.containerId), std::string(e.kind) + " " + e.name + "\tV7.0");
    }
}

TEST(Registry, LookupIgnoresCaseButNotLength) {
    const VX_RegistryEntry* e = VX_RegistryFind("rplug_tcool1");
    ASSERT_NE(e, nullptr);
    EXPECT_STREQ(e->name, "RPLUG_TCOOL1");
    EXPECT_STREQ(VX_RegistryFind("RPLUG_TCOOL")->name, "RPLUG_TCOOL");
    EXPECT_EQ(VX_RegistryFind("RPLUG_TCOOL12"), nullptr);
    EXPECT_EQ(VX_RegistryFind("VFC"), nullptr);
    EXPECT_STREQ(VX_RegistryFind("vx_vfc")->name, "VX_VFC");
    EXPECT_EQ(VX_RegistryFind(""), nullptr);
    EXPECT_EQ(VX_RegistryFind(nullptr), nullptr);
}
