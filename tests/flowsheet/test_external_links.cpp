// A flowsheet binds a block's external references by path ("links") and fills the reaction
// configuration through any block that reads it: an equilibrium constant computed at a kinetics
// block's temperature, written into that block's spare variables; and the faults of a binding
// named by block and reference.
#include "flowsheet_test_support.hpp"

#include <cmath>

namespace zx::flowsheet {
namespace {

using testing::InputErrorOf;

// KIN: one power-law reaction at 150 C; K: the constant of reaction R1 by correlation,
// ln K = 3 + 1000 / T at T + 5 (its approach); its KEQ and LNKEQ go to the unused pressures
// of KIN and of a block without reactions. `links` replaces K's links.
std::string Sheet(const std::string& links) {
    return R"J({"components": {"ab": ["A", "B"]}, "blocks": {
      "KIN": {"type": "POWERLAW", "set": {"NR": 1, "T": {"value": 150, "spec": "Fixed"},
              "Z": {"value": 0.5, "spec": "Fixed"}, "RHO": {"spec": "Fixed"}, "V": {"spec": "Fixed"}}},
      "SPARE": {"type": "POWERLAW", "set": {"NR": 0}},
      "K": {"type": "CALCKEQ", "links": )J" + links + R"J(,
            "set": {"IRXN": "R1", "IRXNCFG.RXNS": ["R1"], "IRXNCFG.KEQA(R1)": 3.0, "IRXNCFG.KEQB(R1)": 1000.0,
                    "IRXNCFG.TAPPROACH(R1)": 5.0}}}})J";
}

TEST(ExternalLinks, ABlockComputesWithWhatItsLinksName) {
    testing::SetUpSheet s(Sheet(R"J({"T": "KIN.T", "KEQ": "KIN.P", "lnkeq": "spare.p"})J"));
    const auto result = SolveSteadyState(*s.system, zx::solve::SolverOptions{}, nullptr);
    ASSERT_EQ(result.status, zx::solve::SolveStatus::Converged) << result.message;
    auto value = [&](const std::string& block, const std::string& path) {
        return *dynamic_cast<VX_VarParam&>(*VX_ResolvePath(*s.sheet->Blocks()[block == "KIN" ? 0 : block == "SPARE" ? 1 : 2].model, path).object)
                    .RealSlot();
    };
    const double lnk = 3.0 + 1000.0 / (155.0 + 273.15);
    EXPECT_NEAR(value("K", "TEQ"), 155.0, 1e-9);
    EXPECT_NEAR(value("SPARE", "P"), lnk, 1e-9);
    EXPECT_NEAR(value("KIN", "P"), std::exp(lnk), 1e-6 * std::exp(lnk));   // to the solver's tolerance
}

TEST(ExternalLinks, FaultsNameTheBlockAndTheReference) {
    EXPECT_NE(InputErrorOf(Sheet(R"J({"T": "R9.T"})J")).find("block K: external reference T: no block named R9"),
              std::string::npos);
    EXPECT_NE(InputErrorOf(Sheet(R"J({"T": "KIN.TX"})J")).find("block K: external reference T: KIN.TX"), std::string::npos);
    EXPECT_NE(InputErrorOf(Sheet(R"J({"TEQ": "KIN.T"})J")).find("external reference TEQ: not an external reference"),
              std::string::npos);
    EXPECT_NE(InputErrorOf(Sheet(R"J({"T": "KIN"})J")).find("a path BLOCK.PROPERTY"), std::string::npos);
}

}  // namespace
}  // namespace zx::flowsheet
