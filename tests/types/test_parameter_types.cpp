// Parameter types: option vocabularies, integer/real/logical defaults, the added VALID
// property of integer types, and what assignments outside a valid set do.
#include <gtest/gtest.h>

#include <set>

#include "type_rows.hpp"
#include "zorexp/text.hpp"

namespace {
namespace d = vx_defaults;

struct OptionRow {
    std::string name;
    Cell<const char*> value;
    const char* valid;
    std::unique_ptr<VX_STRINGPARAMETER> (*make)();
};
struct IntegerRow {
    std::string name;
    Cell<int> value, lower;
    Cell<const char*> valid;
    std::unique_ptr<VX_INTEGERPARAMETER> (*make)();
};
struct RealRow {
    std::string name;
    Cell<double> value, lower, upper;
    Cell<const char*> quantity, unit;
    Cell<int> row, col;
    Cell<const char*> description;
    std::unique_ptr<VX_REALPARAMETER> (*make)();
};
struct LogicalRow {
    std::string name;
    Cell<bool> value;
    std::unique_ptr<VX_LOGICALPARAMETER> (*make)();
};

#define VX_MAKE(ROOT, NAME) []() -> std::unique_ptr<ROOT> { return std::make_unique<VX_##NAME>(); }

const std::vector<OptionRow> kOptions = {
#define VX_OPTION_TYPE(NAME, DEFAULT, VALIDSET) \
    {#NAME, VX_TEST_CELL(DEFAULT), VALIDSET, VX_MAKE(VX_STRINGPARAMETER, NAME)},
#include "types/option_types.def"
#undef VX_OPTION_TYPE
};

std::vector<IntegerRow> kIntegers;
std::vector<RealRow> kReals;
std::vector<LogicalRow> kLogicals;
const bool kScalarsLoaded = [] {
#define VX_OPTION_TYPE(NAME, DEFAULT, VALIDSET)
#define VX_INTEGER_TYPE(NAME, DEFAULT, LOWER, VALIDSET)                                         \
    kIntegers.push_back({#NAME, VX_TEST_CELL(DEFAULT), VX_TEST_CELL(LOWER), VX_TEST_CELL(VALIDSET), \
                         VX_MAKE(VX_INTEGERPARAMETER, NAME)});
#define VX_REAL_TYPE(NAME, DEFAULT, LOWER, UPPER, QUANTITY, UNIT, PQROW, PQCOL, DESCRIPTION)                          \
    kReals.push_back({#NAME, VX_TEST_CELL(DEFAULT), VX_TEST_CELL(LOWER), VX_TEST_CELL(UPPER), VX_TEST_CELL(QUANTITY), \
                      VX_TEST_CELL(UNIT), VX_TEST_CELL(PQROW), VX_TEST_CELL(PQCOL), VX_TEST_CELL(DESCRIPTION),        \
                      VX_MAKE(VX_REALPARAMETER, NAME)});
#define VX_LOGICAL_TYPE(NAME, DEFAULT) \
    kLogicals.push_back({#NAME, VX_TEST_CELL(DEFAULT), VX_MAKE(VX_LOGICALPARAMETER, NAME)});
#include "types/scalar_parameter_types.def"
#undef VX_OPTION_TYPE
#undef VX_INTEGER_TYPE
#undef VX_REAL_TYPE
#undef VX_LOGICAL_TYPE
    return true;
}();

template <class T>
T Or(const Cell<T>& c, T fallback) { return c.declared ? c.value : fallback; }

TEST(ParameterTypes, TableShape) {
    EXPECT_EQ(kOptions.size(), 114u);
    EXPECT_EQ(kIntegers.size(), 5u);
    EXPECT_EQ(kReals.size(), 4u);
    EXPECT_EQ(kLogicals.size(), 1u);
    int withValid = 0;
    for (const auto& r : kIntegers) withValid += r.valid.declared;
    EXPECT_EQ(withValid, 2);
    // The options whose values come at run time (components, solvents, substreams) have an
    // empty valid set and no default; every other option declares both.
    int runtimeLists = 0;
    for (const auto& r : kOptions) {
        const bool empty = *r.valid == '\0';
        runtimeLists += empty;
        EXPECT_EQ(empty, !r.value.declared) << r.name;
    }
    EXPECT_EQ(runtimeLists, 3);
}

TEST(ParameterTypes, OptionDefaultsAndValidSets) {
    const VX_STRINGPARAMETER root;
    for (const auto& r : kOptions) {
        SCOPED_TRACE(r.name);
        auto p = r.make();
        EXPECT_EQ(p->TypeName(), r.name);
        EXPECT_STREQ(p->fv(), Or(r.value, d::kStringValue));
        EXPECT_EQ(p->VX_DefaultVALUE() == root.VX_DefaultVALUE(), !r.value.declared);
        const VX_StrSetData& valid = p->Valid();
        EXPECT_EQ(valid.Text(), r.valid);   // every stored member kept, in stored order
        for (std::size_t k = 1; k < valid.Size(); ++k)
            EXPECT_LT(SUValue::CompareCI(valid.At(k - 1).c_str(), valid.At(k).c_str()), 0)
                << '"' << valid.At(k - 1) << "\" before \"" << valid.At(k) << '"';
        if (!valid.Empty()) {
            EXPECT_TRUE(valid.Contains(p->fv())) << "default \"" << p->fv() << "\" not valid";
        }
        EXPECT_EQ(p->VX_DefaultVALID(), r.make()->VX_DefaultVALID());   // one static per type
    }
}

TEST(ParameterTypes, ScalarDefaultsFollowTheirRows) {
    const VX_INTEGERPARAMETER intRoot;
    for (const auto& r : kIntegers) {
        SCOPED_TRACE(r.name);
        auto p = r.make();
        EXPECT_EQ(p->TypeName(), r.name);
        EXPECT_EQ(p->fv(), Or(r.value, d::kIntegerValue));
        EXPECT_EQ(p->Lower(), Or(r.lower, d::kIntegerLower));
        EXPECT_EQ(p->Upper(), d::kIntegerUpper);
        EXPECT_EQ(p->VX_DefaultVALUE() == intRoot.VX_DefaultVALUE(), !r.value.declared);
        EXPECT_EQ(p->VX_DefaultLOWER() == intRoot.VX_DefaultLOWER(), !r.lower.declared);
        EXPECT_EQ(p->FindProperty("VALID") != nullptr, r.valid.declared);
    }
    const VX_REALPARAMETER realRoot;
    for (const auto& r : kReals) {
        SCOPED_TRACE(r.name);
        auto p = r.make();
        EXPECT_EQ(p->TypeName(), r.name);
        EXPECT_EQ(p->fv(), Or(r.value, d::kRealParamValue));
        EXPECT_EQ(p->Lower(), Or(r.lower, d::kRealParamLower));
        EXPECT_EQ(p->Upper(), Or(r.upper, d::kRealParamUpper));
        EXPECT_EQ(p->VX_DefaultPHYSICALQUANTITY()->TextValue(), Or(r.quantity, d::kQuantity));
        EXPECT_EQ(p->VX_DefaultBASEUOMNAME()->TextValue(), Or(r.unit, d::kBaseUnit));
        EXPECT_EQ(p->VX_PQRow(), Or(r.row, d::kPQRow));
        EXPECT_EQ(p->VX_PQCol(), Or(r.col, d::kPQCol));
        EXPECT_EQ(p->VX_DefaultUPPER() == realRoot.VX_DefaultUPPER(), !r.upper.declared);
        if (r.description.declared) {
            EXPECT_STREQ(p->VX_DefaultDESCRIPTION(), r.description.value);
        } else {
            EXPECT_EQ(p->VX_DefaultDESCRIPTION(), nullptr);
        }
        EXPECT_LE(p->Lower(), p->fv());
        EXPECT_LE(p->fv(), p->Upper());
    }
    for (const auto& r : kLogicals) {
        auto p = r.make();
        EXPECT_EQ(p->fv(), Or(r.value, d::kLogicalValue)) << r.name;
    }
}

// An integer default lies within its bounds and its valid set. The one deliberate exception:
// RPHASETYP declares a valid set (1 to 3) but no default, so it starts at the runtime's 0.
TEST(ParameterTypes, IntegerDefaultsWithinBoundsAndValidSets) {
    for (const auto& r : kIntegers) {
        SCOPED_TRACE(r.name);
        auto p = r.make();
        EXPECT_LE(p->Lower(), p->fv());
        auto* valid = dynamic_cast<VX_INTEGERSET*>(p->FindProperty("VALID"));
        if (!valid) continue;
        EXPECT_EQ(valid->fv().Text(), VX_IntSetData(1, 3).Text());
        EXPECT_EQ(valid->fv().Contains(p->fv()), r.name != "RPHASETYP");
    }
    VX_RPHASETYP phase;
    EXPECT_EQ(phase.fv(), d::kIntegerValue);
}

TEST(ParameterTypes, OptionOutsideItsValidSetIsRefusedWithReasons) {
    VX_YESNO yes;
    ASSERT_EQ(yes.Valid().Members(), (std::vector<std::string>{"No", "Yes"}));
    std::string why;
    EXPECT_EQ(yes.AssignUser(VX_ATTR_VALUE, VX_Value("Maybe", 0), &why), VX_AS_REFUSED);
    EXPECT_NE(why.find("\"Maybe\""), std::string::npos) << why;
    EXPECT_NE(why.find("\"No\""), std::string::npos) << why;
    EXPECT_NE(why.find("\"Yes\""), std::string::npos) << why;
    EXPECT_STREQ(yes.fv(), "Yes");
    EXPECT_TRUE(yes.VALUE().IsDefaultAssignment());

    // Options compare without regard to case.
    EXPECT_EQ(yes.AssignUser(VX_ATTR_VALUE, VX_Value("nO", 0), &why), VX_AS_ASSIGNED);
    EXPECT_TRUE(VX_EqualCI(yes.fv(), "No"));

    // The empty member of POLKINETICSTYPE is a valid value; an empty valid set accepts any.
    VX_POLKINETICSTYPE kinetics;
    EXPECT_EQ(kinetics.AssignUser(VX_ATTR_VALUE, VX_Value("", 0)), VX_AS_ASSIGNED);
    VX_COMPONENTS components;
    EXPECT_EQ(components.AssignUser(VX_ATTR_VALUE, VX_Value("WATER", 0)), VX_AS_ASSIGNED);
}

TEST(ParameterTypes, HoldupBasisValidProperty) {
    VX_HOLDUPBASIS basis;
    VX_INTEGERSET& valid = basis.VALID();
    EXPECT_EQ(basis.FindProperty("valid"), &valid);
    EXPECT_EQ(basis.FindProperty("Valid"), &valid);
    EXPECT_EQ(basis.FindProperty("VALIDS"), nullptr);
    EXPECT_EQ(basis.VX_VALIDValue().Data(), VX_IntSetData(1, 3));
    EXPECT_EQ(basis.VX_DefaultVALID(), VX_HOLDUPBASIS().VX_DefaultVALID());

    int id = 0;
    EXPECT_TRUE(basis.PropertyNameToId("vAlId", id));
    EXPECT_EQ(id, 1);
    id = 0;
    EXPECT_FALSE(basis.PropertyNameToId("LOWER", id));
    EXPECT_EQ(id, 1);   // the VALID identifier is counted before the base is asked
    EXPECT_EQ(basis.FindPropertyById(1), &valid);
    EXPECT_EQ(basis.FindPropertyById(0), nullptr);

    // A type without a valid set answers from the runtime base.
    VX_INTEGERPARAMETER0 plain;
    EXPECT_EQ(plain.FindProperty("valid"), nullptr);
    id = 0;
    EXPECT_FALSE(plain.PropertyNameToId("VALID", id));
    EXPECT_EQ(id, 0);

    // Once the property exists, values outside it are refused and the old value kept.
    std::string why;
    EXPECT_EQ(basis.AssignUser(VX_ATTR_VALUE, VX_Value(4, 0), &why), VX_AS_REFUSED);
    EXPECT_NE(why.find('4'), std::string::npos) << why;
    EXPECT_EQ(basis.fv(), 1);
    EXPECT_EQ(basis.AssignUser(VX_ATTR_VALUE, VX_Value(3, 0)), VX_AS_ASSIGNED);
    EXPECT_EQ(basis.fv(), 3);
}
}  // namespace
