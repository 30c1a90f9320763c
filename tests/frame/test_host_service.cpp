// The host service as the library holds it. The service pointer is internal, so these tests
// use the library's entry code linked into the test rather than the loaded library; each test
// starts with a record of its own.
#include <gtest/gtest.h>

#include "frame/host_service.hpp"
#include "frame/library_entry.hpp"

namespace {

struct FakeCall : VX_HostCall {
    VX_HRESULT QueryInterface(const VX_GUID&, void**) override { return VX_E_NOINTERFACE; }
    std::uint32_t AddRef() override { return static_cast<std::uint32_t>(++refs); }
    std::uint32_t Release() override { return static_cast<std::uint32_t>(--refs); }
    VX_HRESULT Call(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c) override {
        ++calls;
        args[0] = a, args[1] = b, args[2] = c;
        return 0x1234;
    }
    int refs = 0, calls = 0;
    std::uintptr_t args[3] = {};
};

struct FakeService : VX_HostService {
    VX_HRESULT QueryInterface(const VX_GUID& iid, void** out) override {
        ++queries;
        lastIid = iid;
        if (offerCall && iid == VX_IID_HostCall) {
            call.AddRef();
            *out = static_cast<VX_HostCall*>(&call);
            return VX_S_OK;
        }
        *out = nullptr;
        return VX_E_NOINTERFACE;
    }
    std::uint32_t AddRef() override { return 1; }
    std::uint32_t Release() override { return 1; }
    FakeCall call;
    bool offerCall = true;
    int queries = 0;
    VX_GUID lastIid{};
};

std::uintptr_t Word(const void* p) { return reinterpret_cast<std::uintptr_t>(p); }

void Initialise(std::uintptr_t version, FakeService& service, std::uintptr_t handler = 0) {
    const VX_InitRecord record{version, 0, handler, Word(&service)};
    ASSERT_EQ(VX_LibraryInitialize(&record), 1);
}

}  // namespace

TEST(HostService, CallObtainsTheCallInterfaceAndReleasesIt) {
    FakeService service;
    Initialise(3, service);
    EXPECT_EQ(VX_HostServiceCall(7, 8, 9), 0x1234);
    EXPECT_EQ(service.queries, 1);
    EXPECT_TRUE(service.lastIid == VX_IID_HostCall);
    EXPECT_EQ(service.call.args[0], 7u);
    EXPECT_EQ(service.call.args[2], 9u);
    EXPECT_EQ(service.call.refs, 0);

    service.offerCall = false;
    EXPECT_EQ(VX_HostServiceCall(1, 2, 3), VX_E_NOINTERFACE);
    EXPECT_EQ(service.call.calls, 1);

    void* out = &service;
    EXPECT_EQ(VX_HostServiceQueryInterface(VX_IID_IUnknown, &out), VX_E_NOINTERFACE);
    EXPECT_TRUE(service.lastIid == VX_IID_IUnknown);
    EXPECT_EQ(out, nullptr);
}

TEST(HostService, VersionsBelowThreeReachNothing) {
    for (std::uintptr_t version : {1u, 2u}) {
        FakeService service;
        Initialise(version, service);
        // Version 2 takes the service pointer, version 1 does not; neither may use it.
        EXPECT_EQ(VX_CurrentHostService(), version == 2 ? &service : nullptr);
        void* out = nullptr;
        EXPECT_EQ(static_cast<std::uint32_t>(VX_HostServiceQueryInterface(VX_IID_HostCall, &out)), 0x80004005u);
        EXPECT_EQ(static_cast<std::uint32_t>(VX_HostServiceCall(1, 2, 3)), 0x80004005u);
        EXPECT_EQ(service.queries, 0);
    }
}

TEST(HostService, RefusedRecordOfUnknownVersionDropsOnlyTheService) {
    FakeService service, other;
    Initialise(3, service, 0x5000);
    EXPECT_EQ(VX_LibraryInitialize(nullptr), 0);
    EXPECT_EQ(VX_CurrentHostService(), &service);

    const VX_InitRecord refused{4, 1, 2, Word(&other)};
    EXPECT_EQ(VX_LibraryInitialize(&refused), 0);
    EXPECT_EQ(VX_CurrentHostService(), nullptr);
    EXPECT_EQ(VX_LibraryInitializationData()->version, 3u);
    EXPECT_EQ(VX_LibraryInitializationData()->hostService, Word(&service));
    EXPECT_EQ(Word(VX_CurrentOptionsHandler()), 0x5000u);
    // The stored version still admits the service, but none is held: nothing is called.
    EXPECT_TRUE(VX_Failed(VX_HostServiceCall(1, 2, 3)));
    EXPECT_EQ(service.queries + other.queries, 0);
}
