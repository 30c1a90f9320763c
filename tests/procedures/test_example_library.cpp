// The example routine library of docs/routine-libraries.md, built from the source the document
// shows, bound through declarations as a model would bind it.
#include <fstream>
#include <sstream>

#include "declaration_call.hpp"

VX_DECLARE_PROCEDURE(EX_HEAT_DUTY, "ExampleRoutines", "EX_heat_duty", 2, F, "R*, R*, R*, R* -> R", yes, no)
VX_DECLARE_PROCEDURE(EX_MIXTURE_AVERAGE, "ExampleRoutines", "EX_mixture_average", 2, F, "R[1]*, R[1]* -> R", yes, yes)

namespace {

using namespace zx_test;

std::string Read(const std::string& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(ExampleRoutineLibrary, TheDocumentShowsTheSourceThatIsBuilt) {
    const std::string source = Read(ZX_SOURCE_DIR "/examples/routine-library/example_routines.c");
    ASSERT_FALSE(source.empty());
    EXPECT_NE(Read(ZX_SOURCE_DIR "/docs/routine-libraries.md").find(source), std::string::npos)
        << "docs/routine-libraries.md must show examples/routine-library/example_routines.c as it stands";
}

TEST(ExampleRoutineLibrary, HeatDuty) {
    EXPECT_EQ(Call<VXProc_EX_HEAT_DUTY>({Scalar(2.0), Scalar(4.0), Scalar(20.0), Scalar(50.0)}), std::vector<double>{240.0});
    DerivativesAgree<VXProc_EX_HEAT_DUTY>({Scalar(2.0), Scalar(4.0), Scalar(20.0), Scalar(50.0)});
    EXPECT_NE(Refusal<VXProc_EX_HEAT_DUTY>({Scalar(2.0), Scalar(0.0), Scalar(20.0), Scalar(50.0)})
                  .find("EX_heat_duty: the heat capacity must be positive"),
              std::string::npos);
}

TEST(ExampleRoutineLibrary, MixtureAverageOverTheModelsComponents) {
    const std::vector<std::string> components{"WATER", "ETHANOL", "GLYCEROL"};
    EXPECT_EQ(Call<VXProc_EX_MIXTURE_AVERAGE>({Array({1, 1, 2}, {3}), Array({10, 20, 40}, {3})}, {{}}, components),
              std::vector<double>{27.5});
    DerivativesAgree<VXProc_EX_MIXTURE_AVERAGE>({Array({0.2, 0.3, 0.5}, {3}), Array({10, 20, 40}, {3})}, {{}}, components);
    EXPECT_NE(Refusal<VXProc_EX_MIXTURE_AVERAGE>({Array({1, 1}, {2}), Array({10, 20}, {2})}, VX_E_ROUTINE_FAILED, components)
                  .find("2 values for the 3 components of the list"),
              std::string::npos);
}

}  // namespace
