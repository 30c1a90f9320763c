// Every example flowsheet solves to the values of its answer file.
#include "flowsheet_test_support.hpp"

#include <cmath>

namespace zx::flowsheet {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Examples() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(ZX_EXAMPLES_DIR)) {
        const std::string file = entry.path().filename().string();
        const std::string suffix = ".expected.json";
        if (file.size() > suffix.size() && file.compare(file.size() - suffix.size(), suffix.size(), suffix) == 0)
            names.push_back(file.substr(0, file.size() - suffix.size()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

class ExampleFlowsheet : public ::testing::TestWithParam<std::string> {};

TEST_P(ExampleFlowsheet, SolvesToItsAnswerFile) {
    const std::string base = std::string(ZX_EXAMPLES_DIR) + "/" + GetParam();
    SolveCommandOptions options;
    options.file = base + ".json";
    options.json = true;
    std::ostringstream out, err;
    ASSERT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitOk) << err.str();
    const Json got = Json::parse(out.str());
    std::ifstream in(base + ".expected.json");
    const Json expected = Json::parse(in);

    EXPECT_EQ(got["status"], expected["status"]);
    ASSERT_EQ(got["blocks"].size(), expected["blocks"].size());
    for (const auto& [block, values] : expected["blocks"].items()) {
        const Json& g = got["blocks"][block];
        EXPECT_EQ(g.size(), values.size()) << block;   // every variable, none extra
        for (const auto& [path, want] : values.items()) {
            ASSERT_TRUE(g.contains(path)) << block << "." << path;
            const double w = want.get<double>();
            EXPECT_NEAR(g[path].get<double>(), w, 1e-9 * std::max(1.0, std::fabs(w))) << block << "." << path;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Examples, ExampleFlowsheet, ::testing::ValuesIn(Examples()),
                         [](const ::testing::TestParamInfo<std::string>& info) { return info.param; });

// The series power-law example by hand: k = A exp(-E / (R T)) per second, rate = 3600 s/hr
// * V * k * c, net rates by the stoichiometry, duty from the heats of reaction.
TEST(ExampleFlowsheets, PowerLawSeriesMatchesAHandCalculation) {
    SolveCommandOptions options;
    options.file = std::string(ZX_EXAMPLES_DIR) + "/powerlaw_series.json";
    options.json = true;
    std::ostringstream out, err;
    ASSERT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitOk) << err.str();
    const Json got = Json::parse(out.str())["blocks"]["KIN"];
    const double tk = 150.0 + 273.15, gas = 8.31433;
    const double r1 = 3600.0 * 2.0 * 5000.0 * std::exp(-0.05e6 / (gas * tk)) * 5.0;   // 121.1 kmol/hr
    const double r2 = 3600.0 * 2.0 * 2000.0 * std::exp(-0.06e6 / (gas * tk)) * 3.0;   // 1.69 kmol/hr
    EXPECT_NEAR(got["RATEP(1)"].get<double>(), r1, 1e-9 * r1);
    EXPECT_NEAR(got["RATEP(2)"].get<double>(), r2, 1e-9 * r2);
    EXPECT_NEAR(got["RATE(A)"].get<double>(), -r1, 1e-9 * r1);
    EXPECT_NEAR(got["RATE(B)"].get<double>(), r1 - r2, 1e-9 * r1);
    EXPECT_NEAR(got["RATE(C)"].get<double>(), r2, 1e-9 * r2);
    EXPECT_NEAR(got["QTOT"].get<double>(), -0.08 * r1 - 0.05 * r2, 1e-9 * r1);
}

TEST(ExampleFlowsheets, TheDefaultExampleIsAmongThem) {
    const auto names = Examples();
    EXPECT_NE(std::find(names.begin(), names.end(), "coolant_profile"), names.end());
    EXPECT_GE(names.size(), 2u);
}

}  // namespace
}  // namespace zx::flowsheet
