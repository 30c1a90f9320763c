// A model assignment the runtime refuses leaves the property as it was and is kept, with its
// statement and reason, for describe to show; a later acceptable one does not repeat it.
#include <gtest/gtest.h>

#include "model_driver.hpp"
#include "test_refusal.hpp"

namespace {

TEST(RefusedAssignments, AreKeptWithTheirStatementAndReason) {
    ScopedSession session;
    VX_TESTREFUSAL m(true);
    const std::string before = m.CTYPE.fv();
    ASSERT_GE(Prepare(m), 0);
    ASSERT_GE(Prepare(m), 0);   // a second round refuses it again: still one record
    EXPECT_EQ(m.NPTS.fv(), 4);
    EXPECT_EQ(std::string(m.CTYPE.fv()), before);
    ASSERT_EQ(session->Refusals().size(), 1u);
    const VX_Refusal& r = session->Refusals()[0];
    EXPECT_EQ(r.path, "CTYPE");
    EXPECT_EQ(r.attribute, "VALUE");
    EXPECT_EQ(r.value, "Nonsense");
    EXPECT_EQ(r.ordinal, 2);
    EXPECT_NE(r.reason.find("\"TCool-Spec\""), std::string::npos) << r.reason;
}

// Scripts are handed over as wide text, each line ended by a line feed, found by name without
// regard to case or by index.
TEST(Scripts, AreFoundByNameOrIndex) {
    ScopedSession session;
    VX_TESTREFUSAL m(true);
    const VX_Containable& object = m;
    ASSERT_NE(object.Script("initialize", 0), nullptr);
    EXPECT_EQ(std::wstring(object.Script("INITIALIZE", 7)), L"' two lines\n\n");
    EXPECT_EQ(std::wstring(VX_TESTREFUSAL::StaticScript(nullptr, 0)), L"' two lines\n\n");
    EXPECT_EQ(VX_TESTREFUSAL::StaticScript(nullptr, 1), nullptr);
    EXPECT_EQ(object.Script("Terminate", 0), nullptr);
}

}  // namespace
