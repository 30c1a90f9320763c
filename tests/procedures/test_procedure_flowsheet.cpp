// Procedure calls inside a flowsheet solved by the host: one routine call per distinct input
// over a whole Newton solve, and the line the host prints when a routine cannot be reached.
#include <sstream>

#include "flowsheet_test_support.hpp"
#include "procedure_test_support.hpp"
#include "test_declarations.hpp"

namespace {

using zx::flowsheet::testing::TempFile;

// call (Y) = ZXT_SQUARE(X), or the same call into a library that does not exist.
class SquareBlock : public CallModel {
public:
    explicit SquareBlock(bool missing) : X(true), Y(true) {
        VX_Type::AddProperty(&X, this, "X", nullptr, 0, 0);
        VX_Type::AddProperty(&Y, this, "Y", nullptr, 0, 0);
        calls.push_back([this, missing](bool counting) -> VX_ProcedureType* {
            VX_ProcedureType* p = missing ? static_cast<VX_ProcedureType*>(new VXProc_ZXT_MISSING_LIBRARY(counting, 0))
                                          : new VXProc_ZXT_SQUARE(counting, 0);
            p->Argument(X);
            p->Argument(Y);
            return p;
        });
    }
    VX_REALVARIABLE X, Y;
};

VX_Type* CreateSquare(const std::string& type, std::string&) {
    VX_Type* made = new SquareBlock(type == "SQUARE_MISSING");
    made->AddRef();
    return made;
}

// Y fixed at 9, X found by Newton from 1.
int Solve(const char* type, std::string& out, std::string& err) {
    const TempFile file(std::string(R"({"blocks": {"S": {"type": ")") + type +
                        R"(", "set": {"X": 1.0, "Y": {"value": 9.0, "spec": "Fixed"}}}}})");
    zx::flowsheet::SolveCommandOptions options;
    options.file = file.Path();
    std::ostringstream o, e;
    const int status = zx::flowsheet::RunSolve(options, CreateSquare, o, e);
    out = o.str();
    err = e.str();
    return status;
}

TEST(ProcedureFlowsheet, NewtonCallsTheRoutineOncePerDistinctInput) {
    zx_test::RoutinePath path;
    zx_test::ResetRoutines();
    std::string out, err;
    ASSERT_EQ(Solve("SQUARE", out, err), 0) << err;
    EXPECT_NE(out.find("  X  3    Free"), std::string::npos) << out;
    const int calls = zx_test::Calls(), distinct = zx_test::Control<int()>("zxt_distinct_inputs")();
    EXPECT_GT(distinct, 3);
    EXPECT_EQ(calls, distinct);
}

TEST(ProcedureFlowsheet, AnUnreachableRoutineIsReportedInOneLine) {
    zx_test::RoutinePath path;
    std::string out, err;
    EXPECT_NE(Solve("SQUARE_MISSING", out, err), 0);
    const std::string expected = "block S (SQUARE_MISSING): Residuals failed: procedure ZXT_MISSING_LIBRARY in equation CALL "
                                 "(library \"ZxNoSuchLibrary\", entry point \"ZXT_square\"): libZxNoSuchLibrary.so not found; "
                                 "searched: " ZX_TEST_ROUTINE_DIR ", " + VX_OwnRoutineDirectory() + " (after";
    EXPECT_NE(err.find(expected), std::string::npos) << err;
}

}  // namespace
