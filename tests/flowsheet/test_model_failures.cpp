// A model that fails while the solver runs: a negative status, an exception and a residual that
// is not finite each stop the solve with exit status 1 and one line that names the block, its
// type and what went wrong, never a wrong "converged" and never a NaN passed on as a number.
#include "flowsheet_test_support.hpp"

#include <limits>

namespace zx::flowsheet {
namespace {

enum class Fault { Status, Exception, NonFinite };

// RPLUG_TCOOL1 whose residuals fail once the solver has moved Q_FLUX(1) away from its start
// (a negative status, an exception), or whose second residual is infinite from the start.
template <Fault F>
class FaultyWall : public VX_RPLUG_TCOOL1 {
public:
    using VX_RPLUG_TCOOL1::VX_RPLUG_TCOOL1;
    int Residuals(double* r, int group, int start) override {
        const int end = VX_RPLUG_TCOOL1::Residuals(r, group, start);
        if constexpr (F == Fault::NonFinite) {
            r[start + 1] = std::numeric_limits<double>::infinity();
            return end;
        }
        if (!m_started) {
            m_started = true;
            m_start = Q_FLUX(1).fv();
        }
        if (Q_FLUX(1).fv() == m_start) return end;
        if constexpr (F == Fault::Status) return -3;
        throw std::runtime_error("the wall model broke");
    }

private:
    bool m_started = false;
    double m_start = 0.0;
};

VX_Type* CreateFaulty(const std::string& type, std::string& error) {
    VX_Type* made = nullptr;
    if (type == "STATUS") made = new FaultyWall<Fault::Status>(true);
    else if (type == "THROWS") made = new FaultyWall<Fault::Exception>(true);
    else if (type == "INFINITE") made = new FaultyWall<Fault::NonFinite>(true);
    else return testing::CreateBlock(type, error);
    made->AddRef();
    return made;
}

struct Outcome {
    int status;
    std::string out, err;
};

Outcome Solve(const std::string& type) {
    testing::TempFile file(R"({"blocks": {"W": {"type": ")" + type + R"(", "set": {"NPTS": 2, "CTYPE": "TCool-Spec",
        "T_PROCESS": {"value": [80, 90, 100], "spec": "Fixed"}, "U": {"value": 2, "spec": "Fixed"}, "T_COOL": 30}}}})");
    SolveCommandOptions options;
    options.file = file.Path();
    options.iterationLog = false;
    options.json = true;
    std::ostringstream out, err;
    const int status = RunSolve(options, CreateFaulty, out, err);
    return {status, out.str(), err.str()};
}

TEST(ModelFailures, EachStopsTheSolveAndIsNamedOnce) {
    const std::pair<const char*, const char*> cases[] = {
        {"STATUS", "Residuals failed: status -3"},
        {"THROWS", "Residuals failed: the wall model broke"},
        {"INFINITE", "residual W VX_Eqn1 #2 (row 1) is not finite"},
    };
    for (const auto& [type, expected] : cases) {
        SCOPED_TRACE(type);
        const Outcome o = Solve(type);
        EXPECT_EQ(o.status, kExitNotConverged);
        EXPECT_NE(o.err.find(expected), std::string::npos) << o.err;
        EXPECT_NE(o.err.find(std::string("block W (") + type + ")"), std::string::npos) << o.err;
        EXPECT_EQ(o.out.find("\"converged\""), std::string::npos) << o.out;
        EXPECT_EQ(o.out.find("NaN"), std::string::npos) << o.out;
    }
}

}  // namespace
}  // namespace zx::flowsheet
