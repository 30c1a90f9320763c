// Finding routine libraries by name: the search path, case, refusals, and the line that says
// what went wrong.
#include <unistd.h>

#include <filesystem>

#include "procedure_test_support.hpp"
#include "test_declarations.hpp"

namespace fs = std::filesystem;

namespace {

using zx_test::ProcedureTest;

// A model whose one call uses declaration D, evaluated once; returns the residual pass's result.
class LoadingTest : public ProcedureTest {
protected:
    template <class D>
    int Evaluate() {
        model.calls.push_back([this](bool counting) {
            auto* p = new D(counting, 0);
            p->Argument(x);
            p->Argument(y);
            return p;
        });
        EXPECT_EQ(Declare(), 3);
        std::vector<double> r(3, 0.0);
        return model.Residuals(r.data(), 0, 0);
    }
    bool Says(const std::string& text) { return session->LastFailure().message.find(text) != std::string::npos; }

    VX_REALVARIABLE& x = Var(2.0);
    VX_REALVARIABLE& y = Var(0.0);
};

TEST_F(LoadingTest, AMissingLibraryNamesEveryDirectorySearched) {
    EXPECT_EQ(Evaluate<VXProc_ZXT_MISSING_LIBRARY>(), VX_E_ROUTINE_LIBRARY_MISSING);
    const std::string own = VX_OwnRoutineDirectory();
    EXPECT_TRUE(Says("procedure ZXT_MISSING_LIBRARY in equation CALL (library \"ZxNoSuchLibrary\", entry point \"ZXT_square\")"))
        << session->LastFailure().message;
    EXPECT_TRUE(Says("libZxNoSuchLibrary.so not found; searched: " ZX_TEST_ROUTINE_DIR ", " + own)) << session->LastFailure().message;
    EXPECT_EQ(session->LastFailure().message.find('\n'), std::string::npos);
}

TEST_F(LoadingTest, ALibraryWithoutItsInterfaceIsRefused) {
    EXPECT_EQ(Evaluate<VXProc_ZXT_NO_INTERFACE>(), VX_E_ROUTINE_LIBRARY_REFUSED);
    EXPECT_TRUE(Says("libZxNoInterface.so does not export zorexp_routine_interface; searched: ")) << session->LastFailure().message;
}

TEST_F(LoadingTest, ALibraryWithTooOldAnInterfaceIsRefused) {
    EXPECT_EQ(Evaluate<VXProc_ZXT_TOO_OLD>(), VX_E_ROUTINE_LIBRARY_REFUSED);
    EXPECT_TRUE(Says("libZxDenseOnly.so reports routine interface 2, the declaration needs 4")) << session->LastFailure().message;
}

TEST_F(LoadingTest, AMissingEntryPointIsNamed) {
    EXPECT_EQ(Evaluate<VXProc_ZXT_MISSING_ENTRY>(), VX_E_ROUTINE_ENTRY_MISSING);
    EXPECT_TRUE(Says("libZxTestRoutines.so has no entry point \"ZXT_nowhere\"; searched: ")) << session->LastFailure().message;
}

TEST_F(LoadingTest, BothSpellingsReachOneLibraryLoadedOnce) {
    const VX_RoutineLookup a = VX_FindRoutine("ZxTestRoutines", 2, "ZXT_square");
    const VX_RoutineLookup b = VX_FindRoutine("ZXTESTROUTINES", 2, "ZXT_square");
    ASSERT_GE(a.status, 0) << a.why;
    EXPECT_EQ(a.library, b.library);
    EXPECT_EQ(a.entry, b.entry);
    // Attached once, with the same services its added sources are told of.
    EXPECT_EQ(zx_test::Control<int()>("zxt_attached_as_library")(), 1);
    // The declaration spelt "zxtestroutines" calls the routine the other spelling counts.
    EXPECT_EQ(Evaluate<VXProc_ZXT_SQUARE_FD>(), 3);
    EXPECT_EQ(zx_test::Calls(), 1);
}

// A library in the current directory is never taken, whatever the path says.
TEST_F(LoadingTest, TheCurrentDirectoryIsNeverSearched) {
    const fs::path dir = fs::temp_directory_path() / ("zx_cwd_" + std::to_string(getpid()));
    fs::create_directories(dir / "relative");
    fs::copy_file(fs::path(ZX_TEST_ROUTINE_DIR) / "libZxTestRoutines.so", dir / "libZxCwdOnly.so");
    fs::copy_file(fs::path(ZX_TEST_ROUTINE_DIR) / "libZxTestRoutines.so", dir / "relative" / "libZxCwdOnly.so");
    const fs::path before = fs::current_path();
    fs::current_path(dir);
    {
        zx_test::RoutinePath relative(".::relative:" ZX_TEST_ROUTINE_DIR);
        EXPECT_EQ(Evaluate<VXProc_ZXT_CWD_ONLY>(), VX_E_ROUTINE_LIBRARY_MISSING);
        EXPECT_TRUE(Says("searched: " ZX_TEST_ROUTINE_DIR ", ")) << session->LastFailure().message;
        EXPECT_TRUE(Says("(ignored ZOREXP_ROUTINE_PATH entries, not absolute: \".\", \"\", \"relative\")")) << session->LastFailure().message;
    }
    fs::current_path(before);
    fs::remove_all(dir);
}

TEST(RoutineSearchPath, TheRuntimesOwnDirectoryComesLastAndHoldsTheUtilities) {
    zx_test::RoutinePath path("/nonexistent/a:/nonexistent/b");
    const std::string own = VX_OwnRoutineDirectory();
    EXPECT_TRUE(fs::path(own).is_absolute());
    EXPECT_EQ(fs::path(own).filename(), "routines");
    EXPECT_TRUE(fs::exists(fs::path(own) / "libMorvanex.so"));
    EXPECT_EQ(VX_RoutineSearchPath(), (std::vector<std::string>{"/nonexistent/a", "/nonexistent/b", own}));
    unsetenv(VX_ROUTINE_PATH_VARIABLE);
    EXPECT_EQ(VX_RoutineSearchPath(), std::vector<std::string>{own});
}

}  // namespace
