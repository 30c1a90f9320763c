// Reference counting through the primary interface's first slots, as a host calls it.
#include <gtest/gtest.h>

#include "stocklib/generic_bases.hpp"

namespace {
int g_destroyed = 0;
class Probe : public VX_GENERICMODEL {
public:
    ~Probe() override { ++g_destroyed; }
};
using QueryFn = VX_HRESULT (*)(void*, const VX_GUID&, void**);
using CountFn = std::uint32_t (*)(void*);
void** Slots(void* object) { return *static_cast<void***>(object); }
}  // namespace

TEST(ObjectLife, SlotsZeroToTwoAreQueryAddRefRelease) {
    g_destroyed = 0;
    auto* p = new Probe;
    void* obj = static_cast<VX_Containable*>(p);
    ASSERT_EQ(obj, static_cast<void*>(p));   // the primary interface is at the object's address
    auto query = reinterpret_cast<QueryFn>(Slots(obj)[0]);
    auto addRef = reinterpret_cast<CountFn>(Slots(obj)[1]);
    auto release = reinterpret_cast<CountFn>(Slots(obj)[2]);
    EXPECT_EQ(addRef(obj), 1u);
    void* ext = nullptr;
    EXPECT_EQ(query(obj, VX_IID_ModelExtensions, &ext), VX_S_OK);
    EXPECT_NE(ext, nullptr);
    void* unknown = reinterpret_cast<void*>(1);
    EXPECT_EQ(query(obj, VX_GUID{1, 2, 3, {4}}, &unknown), VX_E_NOINTERFACE);
    EXPECT_EQ(unknown, nullptr);
    EXPECT_EQ(release(obj), 1u);   // the reference the query took
    EXPECT_EQ(g_destroyed, 0);
    EXPECT_EQ(release(obj), 0u);
    EXPECT_EQ(g_destroyed, 1);
}

TEST(ObjectLife, UnusedOperationsSayNotImplemented) {
    VX_GENERICMODEL m;
    EXPECT_EQ(m.UpdateProblem(), VX_E_NOTIMPL);
    EXPECT_EQ(m.Evaluate(0, nullptr), VX_E_NOTIMPL);
    EXPECT_STREQ(VX_StatusMessage(VX_E_NOTIMPL), "operation not implemented in this runtime");
    EXPECT_TRUE(m.ContainerDerivesFrom("model genericmodel\tv7.0"));
    EXPECT_FALSE(m.ContainerDerivesFrom("Model GENERICMODEL"));   // the whole text counts
}
