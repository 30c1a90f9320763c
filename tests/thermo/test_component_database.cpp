// The component database file: what the shipped file holds, and how a faulty file is refused
// with its place named.
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include "thermo/component_database.hpp"

namespace {

using zx::thermo::ComponentDatabase;
using zx::thermo::DatabaseError;

std::string Shipped() { return std::string(ZX_SOURCE_DIR) + "/thermo/data/components.json"; }

TEST(ComponentDatabase, ShipsTheIssuesComponentsWithUnitAndSourceOnEveryValue) {
    const ComponentDatabase db = ComponentDatabase::Load(Shipped());
    EXPECT_GE(db.Components().size(), 40u);
    for (const char* id : {"WATER", "N2", "O2", "AR", "H2", "CO", "CO2", "H2S", "SO2", "NH3", "CL2", "HCL", "METHANE", "N-DECANE", "ISOBUTANE",
                           "NEOPENTANE", "ETHYLENE", "PROPYLENE", "1-BUTENE", "BENZENE", "P-XYLENE", "STYRENE", "CYCLOHEXANE", "2-PROPANOL",
                           "ACETIC-ACID", "ETHYLENE-OXIDE", "ETHYLENE-GLYCOL", "MTBE"})
        EXPECT_NE(db.Find(id), ComponentDatabase::npos) << id;
    for (const auto& c : db.Components()) {
        EXPECT_GT(c.molecular_weight, 0.0) << c.id;
        for (const auto& d : c.data) {
            EXPECT_FALSE(d.unit.empty()) << c.id << " " << d.quantity;
            EXPECT_GT(d.source.size(), 20u) << c.id << " " << d.quantity;
        }
    }
}

TEST(ComponentDatabase, FindsByIdOrAliasInAnyCaseAndSuggestsNearIds) {
    const ComponentDatabase db = ComponentDatabase::Load(Shipped());
    EXPECT_EQ(db.Find("h2o"), db.Find("WATER"));
    EXPECT_EQ(db.Find("Ipa"), db.Find("2-PROPANOL"));
    EXPECT_EQ(db.Find("WATERS"), ComponentDatabase::npos);
    EXPECT_EQ(db.Suggest("XYLENE"), (std::vector<std::string>{"M-XYLENE", "O-XYLENE", "P-XYLENE"}));
    EXPECT_TRUE(db.Suggest("QQQQQQQQ").empty());
    try {
        db.Require("TOLUOL");
        FAIL();
    } catch (const DatabaseError& e) {
        EXPECT_STREQ(e.what(), "unknown component \"TOLUOL\" (did you mean TOLUENE?)");
    }
}

class FaultyDatabase : public ::testing::Test {
protected:
    std::string Write(const std::string& components) {
        const std::string path = ::testing::TempDir() + "/faulty_components.json";
        std::ofstream(path) << R"({"sources": {"S": "a handbook table with a long enough name"}, "components": [)" << components << "]}";
        return path;
    }
    std::string Error(const std::string& components) {
        try {
            ComponentDatabase::Load(Write(components));
        } catch (const DatabaseError& e) {
            return e.what();
        }
        return "accepted";
    }
};

TEST_F(FaultyDatabase, NamesTheComponentAndValueAtFault) {
    const std::string water = R"({"id": "water", "name": "water", "formula": "H2O", "molecular_weight": )";
    EXPECT_NE(Error(water + R"({"value": 18.0, "unit": "kg/kmol", "source": "T"}})").find("component WATER.molecular_weight: source \"T\" is not in the file's \"sources\""),
              std::string::npos);
    EXPECT_NE(Error(water + R"({"value": 18.0, "unit": "lb/lbmol", "source": "S"}})").find("unit \"lb/lbmol\" is not a molar-mass unit"), std::string::npos);
    EXPECT_NE(Error(water + R"({"value": "x", "unit": "kg/kmol", "source": "S"}})").find("\"value\" must be a number"), std::string::npos);
    EXPECT_NE(Error(R"({"id": "A", "name": "a", "formula": "A"})").find("component A: \"molecular_weight\" is missing"), std::string::npos);
    const std::string twice = water + R"({"value": 18.0, "unit": "kg/kmol", "source": "S"}, "aliases": ["H2O"]},)" + water +
                              R"({"value": 18.0, "unit": "kg/kmol", "source": "S"}, "aliases": ["H2O"]})";
    EXPECT_NE(Error(twice).find("given to two components"), std::string::npos);
    EXPECT_NE(Error("{").find("not valid JSON"), std::string::npos);
    EXPECT_EQ(Error(water + R"({"value": 18.0, "unit": "kg/kmol", "source": "S"}})"), "accepted");
}

TEST(DatabasePath, EnvironmentOverridesTheDefaultUnderThePrefix) {
    unsetenv(zx::thermo::kDatabaseEnvironmentVariable);
    EXPECT_EQ(zx::thermo::DatabasePath("/opt/zx"), "/opt/zx/share/zorexp/components.json");
    setenv(zx::thermo::kDatabaseEnvironmentVariable, "/tmp/mine.json", 1);
    EXPECT_EQ(zx::thermo::DatabasePath("/opt/zx"), "/tmp/mine.json");
    unsetenv(zx::thermo::kDatabaseEnvironmentVariable);
}

}  // namespace
