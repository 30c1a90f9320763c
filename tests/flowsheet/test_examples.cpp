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

TEST(ExampleFlowsheets, TheDefaultExampleIsAmongThem) {
    const auto names = Examples();
    EXPECT_NE(std::find(names.begin(), names.end(), "coolant_profile"), names.end());
    EXPECT_GE(names.size(), 2u);
}

}  // namespace
}  // namespace zx::flowsheet
