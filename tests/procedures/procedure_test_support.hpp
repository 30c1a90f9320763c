// What the procedure tests share: the test routine library's directory on the search path, its
// control functions, a model driven through the protocol, and numeric differences.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "call_model.hpp"
#include "model_driver.hpp"
#include "zorexp/routine_loader.hpp"

namespace zx_test {

// The test routine directory on ZOREXP_ROUTINE_PATH for the test's duration.
class RoutinePath {
public:
    explicit RoutinePath(const std::string& path = ZX_TEST_ROUTINE_DIR) {
        if (const char* old = std::getenv(VX_ROUTINE_PATH_VARIABLE)) m_old = old, m_had = true;
        setenv(VX_ROUTINE_PATH_VARIABLE, path.c_str(), 1);
    }
    ~RoutinePath() {
        if (m_had) setenv(VX_ROUTINE_PATH_VARIABLE, m_old.c_str(), 1);
        else unsetenv(VX_ROUTINE_PATH_VARIABLE);
    }

private:
    std::string m_old;
    bool m_had = false;
};

// A control function of the test routine library (loading it first if need be).
template <class F>
F* Control(const char* name) {
    RoutinePath path;
    const VX_RoutineLookup found = VX_FindRoutine("ZxTestRoutines", 0, name);
    EXPECT_GE(found.status, 0) << found.why;
    return reinterpret_cast<F*>(found.entry);
}
inline int Calls() { return Control<int()>("zxt_calls")(); }
inline int LastCallType() { return Control<int()>("zxt_last_call_type")(); }
inline double LastInput() { return Control<double()>("zxt_last_input")(); }
inline void SetFailure(int mode) { Control<void(int)>("zxt_set_failure")(mode); }
inline void ResetRoutines() { Control<void()>("zxt_reset")(); }

// A CallModel in a session of its own, with the test routines on the search path.
class ProcedureHarness {
public:
    // Declares the equations; returns what SetUpEquations returned.
    int Declare() {
        pattern = DeclareEquations(model, *session);
        return pattern.setUpResult;
    }
    // The whole model's residuals or Jacobian entries (unwritten ones are -99); expectedStatus 0
    // expects the pass to end past the model's block.
    std::vector<double> Residuals(int expectedStatus = 0) { return Pass(false, expectedStatus); }
    std::vector<double> Jacobian(int expectedStatus = 0) { return Pass(true, expectedStatus); }
    std::vector<double> Pass(bool jacobian, int expectedStatus) {
        const int size = jacobian ? pattern.nonzeros : pattern.equations;
        std::vector<double> v(static_cast<std::size_t>(size), -99.0);
        const int end = jacobian ? model.Jacobian(v.data(), 0, 0) : model.Residuals(v.data(), 0, 0);
        EXPECT_EQ(end, expectedStatus == 0 ? size : expectedStatus) << session->LastFailure().message;
        return v;
    }
    // Owned variables and parameters for binding; they outlive the model's procedures.
    VX_REALVARIABLE& Var(double value) {
        m_vars.push_back(std::make_unique<VX_REALVARIABLE>(true));
        m_vars.back()->SetSolverValue(value);
        return *m_vars.back();
    }
    void Bound(VX_Variable& v, double lower, double upper) {
        v.AssignUser(VX_ATTR_LOWER, VX_Value(-1e300, 0));
        v.AssignUser(VX_ATTR_UPPER, VX_Value(upper, 0));
        v.AssignUser(VX_ATTR_LOWER, VX_Value(lower, 0));
    }

    RoutinePath path;
    std::vector<std::unique_ptr<VX_REALVARIABLE>> m_vars;   // declared before the model: dies after it
    ScopedSession session;
    CallModel model;
    Pattern pattern;
};

class ProcedureTest : public ::testing::Test, public ProcedureHarness {
protected:
    void SetUp() override { ResetRoutines(); }
    void TearDown() override { ResetRoutines(); }
};

}  // namespace zx_test
