// The steady-state solve through the command: results as text, JSON and CSV, the iteration
// log, and the report when the solver stops short.
#include "flowsheet_test_support.hpp"

namespace zx::flowsheet {
namespace {

std::string ReadAll(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// RPLUG_TCOOL over two cells with U free and the first duty fixed: U * DX is nonlinear.
const char* const kFitU = R"j({"globals": {"PI": 3.0}, "blocks": {"K": {"type": "RPLUG_TCOOL", "set": {
    "NPTS": 2, "T_CELL0": {"value": 110, "spec": "Fixed"}, "T_CELL": {"value": [90, 80], "spec": "Fixed"},
    "Q(1)": {"value": 0.5, "spec": "Fixed"}, "U": {"spec": "Free", "value": 5}, "T_COOL": 50,
    "DIAM": {"value": 0.1, "spec": "Fixed"}, "NTUBE": {"value": 10, "spec": "Fixed"}, "L": {"value": 4, "spec": "Fixed"}}}}})j";

TEST(SteadyStateSolve, ConvergesAndWritesEveryVariable) {
    testing::TempFile file(kFitU);
    testing::TempFile csvFile("", ".csv");
    SolveCommandOptions options;
    options.file = file.Path();
    options.json = true;
    options.csvFile = csvFile.Path();
    std::ostringstream out, err;
    ASSERT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitOk) << err.str();

    const Json j = Json::parse(out.str());
    EXPECT_EQ(j["status"], "converged");
    EXPECT_GE(j["iterations"].get<int>(), 2);
    EXPECT_LE(j["residual_norm"].get<double>(), 1e-8);
    const Json& k = j["blocks"]["K"];
    EXPECT_EQ(k.size(), 11u);   // T_CELL0, T_CELL(1..2), Q(1..2), U, T_COOL, DIAM, NTUBE, L, DX
    // DX = L / NPTS = 2; Q(1) = (100 - 50) * (2 * 0.1) * (3 * 10) * (U * 0.0036) = 0.5.
    EXPECT_NEAR(k["DX"].get<double>(), 2.0, 1e-12);
    const double u = 0.5 / (50 * 0.2 * 30 * 0.0036);
    EXPECT_NEAR(k["U"].get<double>(), u, 1e-9 * u);
    EXPECT_NEAR(k["Q(2)"].get<double>(), 0.5 * 35.0 / 50.0, 1e-9);
    EXPECT_NE(err.str().find("iteration   0  residual"), std::string::npos) << err.str();

    const std::string csv = ReadAll(csvFile.Path());
    EXPECT_EQ(csv.rfind("block,path,value,unit,spec\nK,T_CELL0,110,C,Fixed\n", 0), 0u) << csv;
    const auto dx = csv.find("\nK,DX,");
    ASSERT_NE(dx, std::string::npos) << csv;
    EXPECT_NEAR(std::stod(csv.substr(dx + 6)), 2.0, 1e-12);
    EXPECT_NE(csv.find(",m,Free\n", dx), std::string::npos) << csv;
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 12);
}

TEST(SteadyStateSolve, TextResultsAreAlignedPerBlockWithUnits) {
    testing::TempFile file(testing::HeatFluxSheet(1, R"("T_PROCESS": {"value": [80, 90], "spec": "Fixed"},
        "U": {"value": 2, "spec": "Fixed"}, "T_COOL": 30)"));
    SolveCommandOptions options;
    options.file = file.Path();
    options.iterationLog = false;
    std::ostringstream out, err;
    ASSERT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitOk) << err.str();
    EXPECT_EQ(out.str(),
              "C1 (RPLUG_TCOOL1)\n"
              "  T_PROCESS(0)   80  C        Fixed\n"
              "  T_PROCESS(1)   90  C        Fixed\n"
              "  Q_FLUX(0)     100  kW/m2    Free\n"
              "  Q_FLUX(1)     120  kW/m2    Free\n"
              "  U               2  kW/m2/K  Fixed\n"
              "  T_COOL         30  C        Fixed\n"
              "  T_COOL_(0)     25  C        Free\n"
              "  T_COOL_(1)     25  C        Free\n");
    EXPECT_EQ(err.str().find("iteration"), std::string::npos);
}

TEST(SteadyStateSolve, StoppingShortNamesTheLargestResiduals) {
    testing::TempFile file(kFitU);
    SolveCommandOptions options;
    options.file = file.Path();
    options.json = true;
    options.solver.max_iterations = 1;
    std::ostringstream out, err;
    EXPECT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitNotConverged);
    EXPECT_EQ(Json::parse(out.str())["status"], "max_iterations");
    const std::string e = err.str();
    EXPECT_NE(e.find("not converged: iteration limit reached"), std::string::npos) << e;
    EXPECT_NE(e.find("largest residuals:"), std::string::npos) << e;
    EXPECT_NE(e.find("  K VX_Eqn"), std::string::npos) << e;
}

TEST(SteadyStateSolve, AnalyseAloneSolvesNothing) {
    testing::TempFile file(kFitU);
    AnalyseCommandOptions options;
    options.file = file.Path();
    std::ostringstream out, err;
    EXPECT_EQ(RunAnalyse(options, testing::CreateBlock, out, err), kExitOk);
    EXPECT_EQ(out.str(), "3 equations, 3 unknowns, structural rank 3: square and structurally nonsingular\n");
}

}  // namespace
}  // namespace zx::flowsheet

namespace zx::flowsheet {
namespace {

TEST(SteadyStateSolve, AFailedSolveWritesNoCsvAndMarksItsResults) {
    testing::TempFile file(kFitU);
    testing::TempFile csvFile("results of an earlier run\n", ".csv");
    SolveCommandOptions options;
    options.file = file.Path();
    options.csvFile = csvFile.Path();
    options.iterationLog = false;
    options.solver.max_iterations = 1;
    std::ostringstream out, err;
    EXPECT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitNotConverged);
    EXPECT_EQ(ReadAll(csvFile.Path()), "results of an earlier run\n");   // left as it was
    EXPECT_EQ(testing::TemporaryFilesBeside(csvFile.Path()), 0);
    EXPECT_EQ(out.str().rfind("status: max_iterations (not converged; the values are the last iterate)\nK (RPLUG_TCOOL)\n", 0), 0u)
        << out.str();

    // A solution replaces the file whole.
    options.solver.max_iterations = 50;
    std::ostringstream out2, err2;
    EXPECT_EQ(RunSolve(options, testing::CreateBlock, out2, err2), kExitOk) << err2.str();
    EXPECT_EQ(ReadAll(csvFile.Path()).rfind("block,path,value,unit,spec\n", 0), 0u);
    EXPECT_EQ(testing::TemporaryFilesBeside(csvFile.Path()), 0);
}

TEST(SteadyStateSolve, CsvPathsThatCannotHoldTheResultsAreRefusedBeforeReading) {
    testing::TempFile file(kFitU);
    for (const std::string& csv : {file.Path(), std::string("/nonexistent/results.csv"), std::string("/tmp")}) {
        SolveCommandOptions options;
        options.file = file.Path();
        options.csvFile = csv;
        std::ostringstream out, err;
        EXPECT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitBadInput) << csv;
        EXPECT_EQ(out.str(), "");
        const std::string e = err.str();
        EXPECT_EQ(e.rfind(csv + ": ", 0), 0u) << e;
        EXPECT_EQ(std::count(e.begin(), e.end(), '\n'), 1) << e;
    }
    EXPECT_EQ(ReadAll(file.Path()), kFitU);   // the flowsheet is never overwritten
}

TEST(SteadyStateSolve, NoUnknownsAndNonFiniteResidualsAreNeverCalledConverged) {
    // A negative NPTS leaves the block without points: nothing to solve.
    testing::TempFile empty(R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"NPTS": -3, "U": {"spec": "Fixed"}}}}})");
    SolveCommandOptions options;
    options.file = empty.Path();
    options.json = true;
    std::ostringstream out, err;
    EXPECT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitNotSolvable);
    EXPECT_EQ(Json::parse(out.str())["status"], "empty");
    EXPECT_NE(err.str().find("nothing to solve"), std::string::npos) << err.str();

    // (1e308 - 25) * 1e308 overflows: the residual is not finite, and neither is its norm.
    testing::TempFile overflow(testing::HeatFluxSheet(0, R"("T_PROCESS": {"value": [1e308], "spec": "Fixed"},
        "U": {"value": 1e308, "spec": "Fixed"}, "T_COOL": 25)"));
    options.file = overflow.Path();
    std::ostringstream out2, err2;
    EXPECT_EQ(RunSolve(options, testing::CreateBlock, out2, err2), kExitNotConverged);
    const Json j = Json::parse(out2.str());
    EXPECT_EQ(j["status"], "non_finite_residual");
    EXPECT_TRUE(j["residual_norm"].is_null());
}

}  // namespace
}  // namespace zx::flowsheet
