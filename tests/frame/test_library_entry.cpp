// The library-wide exports, driven through dlsym on private copies of the library so that every
// test starts from the module state of a first load.
#include <gtest/gtest.h>

#include <cstdint>

#include "frame/library_entry.hpp"
#include "loaded_library.hpp"

namespace {

using InitializeFn = std::int32_t (*)(const VX_InitRecord*);
using DataFn = VX_InitRecord* (*)();
using RegisterFn = std::int32_t (*)(std::uintptr_t);

struct ScriptedHandler : ZormOptionsHandler {
    explicit ScriptedHandler(std::int32_t a) : answer(a) {}
    std::int32_t HandleOptions(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c, std::uintptr_t d) override {
        ++calls;
        seen[0] = a, seen[1] = b, seen[2] = c, seen[3] = d;
        return answer;
    }
    std::int32_t answer;
    int calls = 0;
    std::uintptr_t seen[4] = {};
};

std::uintptr_t Word(const void* p) { return reinterpret_cast<std::uintptr_t>(p); }

bool SameRecord(const VX_InitRecord& a, const VX_InitRecord& b) {
    return a.version == b.version && a.hostDatum == b.hostDatum && a.optionsHandler == b.optionsHandler &&
           a.hostService == b.hostService;
}

class LibraryEntry : public ::testing::Test {
protected:
    LoadedLibrary lib = LoadedLibrary::FreshCopy();
    InitializeFn initialize = lib.Function<InitializeFn>("KRInitialize");
    DataFn data = lib.Function<DataFn>("GetDLLInitializationData");
    RegisterFn registerDummy = lib.Function<RegisterFn>("RegisterDummyOptionsHandler");

    std::int32_t Ask(std::uintptr_t a = 1, std::uintptr_t b = 2, std::uintptr_t c = 3, std::uintptr_t d = 4) {
        auto* current = reinterpret_cast<ZormOptionsHandler*>(data()->optionsHandler);
        return current->HandleOptions(a, b, c, d);
    }
};

}  // namespace

TEST_F(LibraryEntry, StoredRecordIsZeroBeforeInitialisationAndVerbatimAfter) {
    VX_InitRecord* stored = data();
    EXPECT_TRUE(SameRecord(*stored, VX_InitRecord{}));
    // Version 1 ignores the host service, yet the stored record keeps the caller's word 3.
    const VX_InitRecord record{1, 0x11, 0, 0xBEEF};
    EXPECT_EQ(initialize(&record), 1);
    EXPECT_EQ(data(), stored);
    EXPECT_TRUE(SameRecord(*stored, record));
}

TEST_F(LibraryEntry, RefusedRecordsChangeNothing) {
    ScriptedHandler handler(7);
    const VX_InitRecord taken{2, 0x22, Word(&handler), 0x33};
    ASSERT_EQ(initialize(&taken), 1);
    EXPECT_EQ(initialize(nullptr), 0);
    for (std::uintptr_t version : {std::uintptr_t{0}, std::uintptr_t{4}, ~std::uintptr_t{0}}) {
        const VX_InitRecord refused{version, 0x44, 0x55, 0x66};
        EXPECT_EQ(initialize(&refused), 0) << "version " << version;
    }
    EXPECT_TRUE(SameRecord(*data(), taken));
    EXPECT_EQ(Ask(), 7);
}

TEST_F(LibraryEntry, FirstRegistrationReportsNoHandlerAndSetsVersionOne) {
    ScriptedHandler fallback(5);
    EXPECT_EQ(registerDummy(Word(&fallback)), 1);
    EXPECT_EQ(data()->version, 1u);
    const std::uintptr_t proxy = data()->optionsHandler;
    EXPECT_NE(proxy, 0u);
    EXPECT_NE(proxy, Word(&fallback));
    EXPECT_EQ(Ask(9, 8, 7, 6), 5);
    EXPECT_EQ(fallback.seen[0], 9u);
    EXPECT_EQ(fallback.seen[3], 6u);

    // The proxy is current now: a second registration finds a handler and replaces only the
    // fallback, without chaining the proxy to itself.
    ScriptedHandler second(6);
    EXPECT_EQ(registerDummy(Word(&second)), 0);
    EXPECT_EQ(data()->optionsHandler, proxy);
    EXPECT_EQ(Ask(), 6);
    EXPECT_EQ(fallback.calls, 1);
}

TEST_F(LibraryEntry, RegistrationKeepsAVersionAlreadyStored) {
    const VX_InitRecord record{3, 0, 0, 0};
    ASSERT_EQ(initialize(&record), 1);
    EXPECT_EQ(registerDummy(0), 1);
    EXPECT_EQ(data()->version, 3u);
    EXPECT_EQ(Ask(), VX_OPTIONS_NOT_HANDLED);   // neither a previous handler nor a fallback
}

TEST_F(LibraryEntry, ProxyAsksThePreviousHandlerBeforeTheFallback) {
    ScriptedHandler previous(3), fallback(5);
    const VX_InitRecord record{1, 0, Word(&previous), 0};
    ASSERT_EQ(initialize(&record), 1);
    EXPECT_EQ(registerDummy(Word(&fallback)), 0);
    EXPECT_EQ(Ask(), 3);
    EXPECT_EQ(fallback.calls, 0);

    previous.answer = VX_OPTIONS_NOT_HANDLED;
    EXPECT_EQ(Ask(), 5);
    fallback.answer = VX_OPTIONS_NOT_HANDLED;
    EXPECT_EQ(Ask(), VX_OPTIONS_NOT_HANDLED);
    EXPECT_EQ(previous.calls, 3);
    EXPECT_EQ(fallback.calls, 2);

    // A later initialisation installs the new record's handler, bypassing the proxy.
    ScriptedHandler replacement(8);
    const VX_InitRecord again{2, 0, Word(&replacement), 0};
    ASSERT_EQ(initialize(&again), 1);
    EXPECT_EQ(data()->optionsHandler, Word(&replacement));
    EXPECT_EQ(Ask(), 8);
    EXPECT_EQ(previous.calls, 3);
}

TEST_F(LibraryEntry, FallbackMarkerOneIsNeverCalled) {
    ScriptedHandler previous(VX_OPTIONS_NOT_HANDLED);
    const VX_InitRecord record{2, 0x77, Word(&previous), 0};
    ASSERT_EQ(initialize(&record), 1);
    EXPECT_EQ(registerDummy(1), 0);
    EXPECT_EQ(Ask(), VX_OPTIONS_NOT_HANDLED);
    EXPECT_EQ(previous.calls, 1);
    EXPECT_EQ(data()->version, 2u);
    EXPECT_EQ(data()->hostDatum, 0x77u);
}
