// Set values and flag conditions of model descriptions (tests/descriptions/test_sets.model):
// a set written out, the product of two sets, a component-list option times the components,
// and assignments that follow whether a connection matched a port variable.
#include <gtest/gtest.h>

#include <memory>

#include "model_driver.hpp"
#include "test_sets.hpp"
#include "test_source.hpp"

namespace {

using Names = std::vector<std::string>;

TEST(DescriptionSets, WrittenOutProductAndOptionSets) {
    ScopedSession session;
    session->DefineComponentList("L", {"A", "B", "C"}, {{"CARRIERS", SUValue("c\"X\"A\"")}});
    VX_TESTSETS m(true);
    ASSERT_GE(Prepare(m), 0);
    EXPECT_EQ(m.ELEMENTS.fv().Members(), (Names{"C", "H", "O"}));
    EXPECT_EQ(m.LEVELS.fv(), VX_ParseIntSet("3\"5\""));             // {1, 3, 5, 9} * (2 .. 8)
    EXPECT_EQ(m.CARRIERS.fv().Members(), (Names{"c", "A"}));        // the option's order, its listed members only
    EXPECT_EQ(m.A.Size(), 6);
    EXPECT_EQ(m.Q.CurrSpec(), VX_SPEC_FREE);                        // nothing is matched yet
    EXPECT_FALSE(m.IN.X("A").Flag(VX_ATTR_RECORD));
}

TEST(DescriptionSets, AListWithoutTheOptionGivesAnEmptySet) {
    ScopedSession session;
    session->DefineComponentList("L", {"A", "B"});
    VX_TESTSETS m(true);
    ASSERT_GE(Prepare(m), 0);
    EXPECT_TRUE(m.CARRIERS.fv().Empty());
    EXPECT_EQ(m.A.Size(), 0);
}

TEST(DescriptionSets, AssignmentsFollowTheFlagsAConnectionSets) {
    ScopedSession session;
    session->DefineComponentList("L", {"A", "B"});
    VX_TESTSOURCE source(true);
    VX_TESTSETS m(true);
    std::string why;
    std::unique_ptr<VX_Connection> joined(VX_Connection::Make(source.OUT, m.IN, &why));
    ASSERT_TRUE(joined) << why;
    VX_ProtocolDriver driver;
    driver.AddBlock(source);
    driver.AddBlock(m);
    driver.AddConnection(*joined);
    ASSERT_GE(driver.SetDims(), 0);
    ASSERT_GE(driver.ExecuteAssignments(0, VX_CTX_MODEL), 0);
    EXPECT_TRUE(m.IN.Q.Flag(VX_ATTR_ISMATCHED));
    EXPECT_EQ(m.Q.CurrSpec(), VX_SPEC_FIXED);
    EXPECT_TRUE(m.IN.X("A").Flag(VX_ATTR_RECORD));
    EXPECT_TRUE(m.IN.X("B").Flag(VX_ATTR_RECORD));
}

}  // namespace
