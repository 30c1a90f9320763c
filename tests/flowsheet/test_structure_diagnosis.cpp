// Analysis before solving: over- and under-specified systems are named by block, variable and
// equation, and not solved.
#include "flowsheet_test_support.hpp"

#include "flowsheet/structure_diagnosis.hpp"

namespace zx::flowsheet {
namespace {

using testing::HeatFluxSheet;
using testing::SetUpSheet;

std::string Diagnosis(const std::string& text, StructureDiagnosis* d = nullptr) {
    SetUpSheet s(text);
    StructureDiagnosis diagnosis = DiagnoseStructure(*s.system, 4);
    std::ostringstream out;
    WriteDiagnosis(diagnosis, out);
    if (d) *d = diagnosis;
    return out.str();
}

TEST(StructureDiagnosis, SquareSystemWithUnusedFreeVariablesNoted) {
    StructureDiagnosis d;
    const std::string text = Diagnosis(HeatFluxSheet(2, R"("T_PROCESS": {"spec": "Fixed"}, "U": {"spec": "Fixed"})"), &d);
    EXPECT_TRUE(d.Solvable());
    EXPECT_EQ(d.equations, 3);
    EXPECT_EQ(d.unknowns, 3);   // Q_FLUX(0..2); T_COOL is fixed by the model
    // T_COOL_ belongs to the other CTYPE: free, in no equation, not an unknown.
    EXPECT_EQ(text,
              "3 equations, 3 unknowns, structural rank 3: square and structurally nonsingular\n"
              "note: 3 free variables in no equation (not unknowns, kept at their values): C1.T_COOL_(0), "
              "C1.T_COOL_(1), C1.T_COOL_(2)\n");
}

TEST(StructureDiagnosis, UnderSpecifiedNamesWhatToFix) {
    StructureDiagnosis d;
    const std::string text = Diagnosis(HeatFluxSheet(1, R"("T_PROCESS": {"spec": "Fixed"})"), &d);
    EXPECT_EQ(d.status, "under_specified");
    ASSERT_EQ(d.faults.size(), 1u);
    EXPECT_EQ(d.faults[0].count, 1);
    EXPECT_NE(text.find("2 equations, 3 unknowns, structural rank 2: under-specified, not solvable as posed\n"),
              std::string::npos) << text;
    EXPECT_NE(text.find("1 unknown too many: fix 1 of: C1.Q_FLUX(0), C1.U, C1.Q_FLUX(1)\n"), std::string::npos) << text;
}

TEST(StructureDiagnosis, OverSpecifiedNamesEquationsAndFixedVariables) {
    StructureDiagnosis d;
    const std::string text = Diagnosis(
        HeatFluxSheet(1, R"j("T_PROCESS": {"spec": "Fixed"}, "U": {"spec": "Fixed"}, "Q_FLUX(1)": {"spec": "Fixed"})j"), &d);
    EXPECT_EQ(d.status, "over_specified");
    EXPECT_NE(text.find("1 equation too many among: C1 VX_Eqn1 #2 (row 1)\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\n    free 1 of: C1.Q_FLUX(1), C1.U, C1.T_PROCESS(1), C1.T_COOL; or remove/relax 1 of those equations"),
              std::string::npos) << text;
}

TEST(StructureDiagnosis, SquareButSingularAcrossBlocks) {
    // Block A lacks one fixed variable, block B has one too many: square overall, yet singular.
    StructureDiagnosis d;
    const std::string text = Diagnosis(
        R"({"blocks": {"A": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 0, "CTYPE": "TCool-Spec", "T_PROCESS": {"spec": "Fixed"}}},
            "B": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 0, "CTYPE": "TCool-Spec", "U": {"spec": "Fixed"},
                  "T_PROCESS": {"spec": "Fixed"}, "Q_FLUX": {"spec": "Fixed"}}}}})",
        &d);
    EXPECT_EQ(d.status, "structurally_singular");
    EXPECT_EQ(d.equations, d.unknowns);
    EXPECT_NE(text.find("fix 1 of: A.Q_FLUX(0), A.U"), std::string::npos) << text;
    EXPECT_NE(text.find("too many among: B VX_Eqn1 #1 (row 1)"), std::string::npos) << text;
}

TEST(StructureDiagnosis, IndependentGroupsAreCountedApart) {
    // A lacks one fixed variable; B, an RPLUG_TCOOL with its duties fixed, lacks four (its three
    // equations hold seven free variables). Ten unknowns too many in all, yet the advice is per
    // group.
    StructureDiagnosis d;
    const std::string text = Diagnosis(
        R"({"blocks": {"A": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 1, "CTYPE": "TCool-Spec", "T_PROCESS": {"spec": "Fixed"}}},
            "B": {"type": "RPLUG_TCOOL", "set": {"NPTS": 2, "Q": {"spec": "Fixed"}}}}})",
        &d);
    EXPECT_EQ(d.equations, 5);
    EXPECT_EQ(d.unknowns, 10);
    ASSERT_EQ(d.faults.size(), 2u);
    EXPECT_EQ(d.faults[0].count, 1);
    EXPECT_EQ(d.faults[1].count, 4);
    EXPECT_NE(text.find("  1 unknown too many: fix 1 of: A.Q_FLUX(0), A.U, A.Q_FLUX(1)\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  4 unknowns too many: fix 4 of: B.DX, B.L, B.T_CELL0, B.T_CELL(1) and 3 more\n"), std::string::npos)
        << text;
}

TEST(StructureDiagnosis, TheSolveCommandStopsWithStatusThree) {
    testing::TempFile file(HeatFluxSheet(1, R"("T_PROCESS": {"spec": "Fixed"})"));
    SolveCommandOptions options;
    options.file = file.Path();
    options.json = true;
    std::ostringstream out, err;
    EXPECT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitNotSolvable);
    const Json j = Json::parse(out.str());
    EXPECT_EQ(j["status"], "under_specified");
    EXPECT_EQ(j["faults"][0]["kind"], "too_many_unknowns");
    EXPECT_EQ(j["faults"][0]["count"], 1);
    EXPECT_EQ(err.str().find("iteration"), std::string::npos);   // nothing was solved
}

}  // namespace
}  // namespace zx::flowsheet
