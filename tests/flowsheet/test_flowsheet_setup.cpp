// Setting up blocks from a file: values applied as user values in rounds around SetDims and
// ExecuteAssignments, and every value that cannot be applied refused with its location.
#include "flowsheet_test_support.hpp"

#include "flowsheet/variable_walk.hpp"

namespace zx::flowsheet {
namespace {

using testing::HeatFluxSheet;
using testing::InputErrorOf;
using testing::SetUpSheet;

VX_RPLUG_TCOOL1& Model(const SetUpSheet& s, std::size_t block = 0) {
    return *static_cast<VX_RPLUG_TCOOL1*>(s.sheet->Blocks()[block].model);
}

TEST(FlowsheetSetUp, ElementsThatExistOnlyAfterSetDimsCanBeSet) {
    // T_PROCESS(3) exists once NPTS is set, NRANGE assigned and the arrays sized.
    SetUpSheet s(HeatFluxSheet(4, R"j("T_PROCESS(3)": {"value": 410.5, "spec": "Fixed"}, "Q_FLUX": {"4": 7.5})j"));
    VX_RPLUG_TCOOL1& m = Model(s);
    EXPECT_EQ(m.T_PROCESS.Size(), 5);
    EXPECT_DOUBLE_EQ(m.T_PROCESS(3).fv(), 410.5);
    EXPECT_EQ(m.T_PROCESS(3).CurrSpec(), VX_SPEC_FIXED);
    EXPECT_EQ(m.T_PROCESS(2).CurrSpec(), VX_SPEC_FREE);
    EXPECT_DOUBLE_EQ(m.Q_FLUX(4).fv(), 7.5);
    EXPECT_GE(s.sheet->SetUpRounds(), 3);
}

TEST(FlowsheetSetUp, ArrayAttributesForEveryElementOrInSetOrder) {
    SetUpSheet s(HeatFluxSheet(2, R"("T_PROCESS": {"value": [300, 310, 320], "spec": "Fixed", "upper": 900},
                                    "Q_FLUX": [1.5, {"value": 2.5, "lower": -5}, 3.5])"));
    VX_RPLUG_TCOOL1& m = Model(s);
    for (int i = 0; i <= 2; ++i) {
        EXPECT_DOUBLE_EQ(m.T_PROCESS(i).fv(), 300.0 + 10 * i);
        EXPECT_EQ(m.T_PROCESS(i).CurrSpec(), VX_SPEC_FIXED);
        EXPECT_DOUBLE_EQ(m.T_PROCESS(i).Upper(), 900.0);
        EXPECT_DOUBLE_EQ(m.Q_FLUX(i).fv(), 1.5 + i);
    }
    EXPECT_DOUBLE_EQ(m.Q_FLUX(1).Lower(), -5.0);
}

TEST(FlowsheetSetUp, UserValuesHoldAgainstTheModelsAssignments) {
    // The model fixes T_COOL; the file frees it. Bounds that would cross on the way are applied
    // in the order that keeps them apart.
    SetUpSheet s(HeatFluxSheet(1, R"("T_COOL": {"spec": "Free", "lower": 6000, "upper": 7000, "value": 6500})"));
    VX_RPLUG_TCOOL1& m = Model(s);
    EXPECT_EQ(m.T_COOL.CurrSpec(), VX_SPEC_FREE);
    EXPECT_DOUBLE_EQ(m.T_COOL.Lower(), 6000.0);
    EXPECT_DOUBLE_EQ(m.T_COOL.fv(), 6500.0);
}

TEST(FlowsheetSetUp, GlobalsAreSetAsUserValuesOverTheModels) {
    SetUpSheet s(R"({"globals": {"pi": 3.5}, "blocks": {"A": {"type": "RPLUG_TCOOL", "set": {"NPTS": 1}},
                    "B": {"type": "RPLUG_TCOOL", "set": {"NPTS": 2}}}})");
    auto& a = *static_cast<VX_RPLUG_TCOOL*>(s.sheet->Blocks()[0].model);
    auto& b = *static_cast<VX_RPLUG_TCOOL*>(s.sheet->Blocks()[1].model);
    EXPECT_DOUBLE_EQ((*a.PI).fv(), 3.5);
    EXPECT_EQ(&*a.PI, &*b.PI);   // one global for the flowsheet
    EXPECT_DOUBLE_EQ((*b.UCF6).fv(), 0.0036);
    EXPECT_EQ(InputErrorOf(R"({"globals": {"EPS": 1e-6}, "blocks": {"A": {"type": "RPLUG_TCOOL"}}})"),
              "/globals/EPS: no block uses a global named \"EPS\" (globals in use: PI, UCF6)");
    EXPECT_EQ(InputErrorOf(R"({"globals": {"PI": "three"}, "blocks": {"A": {"type": "RPLUG_TCOOL"}}})"),
              "/globals/PI: global PI: expects a real number, got text \"three\"");
}

TEST(FlowsheetSetUp, ComponentListOfABlock) {
    SetUpSheet s(R"({"components": {"main": ["A"], "alt": ["B", "C"]}, "blocks": {"R1": {"type": "RPLUG_TCOOL1"},
                    "R2": {"type": "RPLUG_TCOOL1", "components": "alt"}}})");
    EXPECT_EQ(s.sheet->Blocks()[0].model->ComponentList()->v().Data().Size(), 1u);   // the default list
    EXPECT_EQ(s.sheet->Blocks()[1].model->ComponentList()->v().Data().Size(), 2u);
}

VX_Containable* MakeHeatFlux() {
    auto* m = new VX_RPLUG_TCOOL1(true);
    m->AddRef();
    return m;
}

TEST(FlowsheetSetUp, BlocksFromFactoryExports) {
    const BlockCreator create = CreatorFromFactories([](const std::string& type) -> FactoryFunction {
        return type == "RPLUG_TCOOL1" ? &MakeHeatFlux : nullptr;
    });
    SetUpSheet s(HeatFluxSheet(1, ""), create);
    EXPECT_EQ(s.sheet->Blocks()[0].model->TypeName(), "RPLUG_TCOOL1");
    try {
        SetUpSheet bad(R"({"blocks": {"X": {"type": "RPLUG_TCOOL"}}})", create);
        ADD_FAILURE();
    } catch (const InputError& e) {
        EXPECT_STREQ(e.what(), "block X: unknown type \"RPLUG_TCOOL\" (the model library has no factory for it)");
    }
}

TEST(FlowsheetSetUp, EachBadValueIsOneErrorAtItsPointer) {
    EXPECT_EQ(InputErrorOf(R"({"blocks": {"R1": {"type": "RPLUG_TCOOLX"}}})"),
              "/blocks/R1/type: block R1: unknown type \"RPLUG_TCOOLX\" (the tests make the types that have a model description only)");
    EXPECT_EQ(InputErrorOf(HeatFluxSheet(2, R"("T_PROSESS": 300)")),
              "/blocks/C1/set/T_PROSESS: block C1: no property T_PROSESS in RPLUG_TCOOL1");
    EXPECT_EQ(InputErrorOf(HeatFluxSheet(2, R"j("T_PROCESS(3)": 300)j")).substr(0, 54),
              "/blocks/C1/set/T_PROCESS(3): block C1: no element T_PR");
    EXPECT_EQ(InputErrorOf(R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 2.5}}}})"),
              "/blocks/C1/set/NPTS: C1.NPTS: expects an integer, got real \"2.5\"");
    EXPECT_EQ(InputErrorOf(R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"CTYPE": "Lukewarm"}}}})").substr(0, 79),
              "/blocks/C1/set/CTYPE: C1.CTYPE: value \"Lukewarm\" is not one of the valid values");
    EXPECT_EQ(InputErrorOf(HeatFluxSheet(2, R"("U": {"value": 1, "spec": "Tight"})")),
              "/blocks/C1/set/U/spec: C1.U spec: expects a spec (Fixed, Free, Initial, RateInitial), got \"Tight\"");
    EXPECT_EQ(InputErrorOf(HeatFluxSheet(2, R"("U": {"value": 1, "units": "W"})")),
              "/blocks/C1/set/U/units: C1.U: unknown attribute \"units\" (value, spec, lower, upper, unit)");
    EXPECT_EQ(InputErrorOf(HeatFluxSheet(2, R"("T_PROCESS": [300, 310])")),
              "/blocks/C1/set/T_PROCESS: C1.T_PROCESS has 3 elements, the list gives 2");
    EXPECT_EQ(InputErrorOf(HeatFluxSheet(2, R"("T_PROCESS": [300, "hot", 320])")),
              "/blocks/C1/set/T_PROCESS/1: C1.T_PROCESS(1): expects a real number, got text \"hot\"");
    EXPECT_EQ(InputErrorOf(HeatFluxSheet(2, R"("T_PROCESS": {"value": [1, 2, "x"]})")),
              "/blocks/C1/set/T_PROCESS/value/2: C1.T_PROCESS(2): expects a real number, got text \"x\"");
    EXPECT_EQ(InputErrorOf(HeatFluxSheet(2, R"("T_PROCESS": 300)")).substr(0, 53),
              "/blocks/C1/set/T_PROCESS: C1.T_PROCESS is an array: g");
}

TEST(FlowsheetSetUp, TheCommandReportsBadInputOnOneLineAndSolvesNothing) {
    testing::TempFile file(HeatFluxSheet(2, R"("U": {"value": "fast"})"));
    testing::TempFile dup(R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 1, "NPTS": 3}}}})");
    for (const auto* f : {&file, &dup}) {
        std::ostringstream out, err;
        SolveCommandOptions options;
        options.file = f->Path();
        EXPECT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitBadInput);
        EXPECT_EQ(out.str(), "");
        const std::string e = err.str();
        // The line and column of the value, then its pointer.
        EXPECT_EQ(e.rfind(f->Path() + ":1:", 0), 0u) << e;
        EXPECT_NE(e.find(": /blocks/C1/set/"), std::string::npos) << e;
        EXPECT_EQ(std::count(e.begin(), e.end(), '\n'), 1) << e;
    }
    for (const auto& [path, why] : {std::pair<std::string, std::string>{"/nonexistent/flowsheet.json", "cannot read the file: No such file or directory"},
                                    {"/tmp", "is a directory, not a flowsheet file"},
                                    {"/dev/zero", "is not a regular file"}}) {
        std::ostringstream out, err;
        SolveCommandOptions options;
        options.file = path;
        EXPECT_EQ(RunSolve(options, testing::CreateBlock, out, err), kExitBadInput);
        EXPECT_EQ(err.str(), path + ": " + why + "\n");
    }
}

TEST(FlowsheetSetUp, IntegersAreRangeCheckedWhereIntegersAreExpected) {
    // The runtime's integers have 32 bits; a wider integer is a real number where one is wanted.
    EXPECT_EQ(InputErrorOf(R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 4294967296}}}})"),
              "/blocks/C1/set/NPTS: C1.NPTS: integer 4294967296 is outside the range of integers (-2147483648 to 2147483647)");
    EXPECT_EQ(InputErrorOf(R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"NRANGE": [0, 1, 18446744073709551615]}}}})"),
              "/blocks/C1/set/NRANGE: C1.NRANGE: set member 18446744073709551615 (item 2) is outside the range of integers "
              "(-2147483648 to 2147483647)");
    EXPECT_EQ(InputErrorOf(R"({"blocks": {"C1": {"type": "RPLUG_TCOOL1", "set": {"NRANGE": [0, 1.5]}}}})"),
              "/blocks/C1/set/NRANGE: C1.NRANGE: a set of integers holds integers only, got a real number 1.5 (item 1)");
    SetUpSheet s(HeatFluxSheet(1, R"("U": 10000000000, "T_PROCESS": [-2147483649, 2147483648])"));
    EXPECT_DOUBLE_EQ(Model(s).U.fv(), 1e10);
    EXPECT_DOUBLE_EQ(Model(s).T_PROCESS(0).fv(), -2147483649.0);
}

TEST(FlowsheetSetUp, RefusalsInsideValuesAreLocatedByLineAndColumn) {
    try {
        SetUpSheet s(HeatFluxSheet(2, "\"T_PROCESS\": {\"value\": [1,\n 2, \"x\"]}"));
        ADD_FAILURE();
    } catch (const InputError& e) {
        EXPECT_EQ(e.Position().Text(), "2:5");
        EXPECT_EQ(e.Pointer(), "/blocks/C1/set/T_PROCESS/value/2");
    }
}

// A fixed value outside the bounds the block's own assignments give (a property block's limits
// from its globals) is the file's fault; the globals move the bounds, and a free start value is
// left to the solver.
TEST(FlowsheetSetUp, FixedValuesOutsideTheBlocksBoundsAreRefused) {
    const auto sheet = [](const std::string& globals, const std::string& t) {
        return R"({"components": {"w": ["WATER"]}, )" + globals + R"("blocks": {"L": {"type": "PROPS_LIQUID", "set": {"T": )" + t + "}}}}";
    };
    EXPECT_EQ(InputErrorOf(sheet("", R"({"value": 2500, "spec": "Fixed"})")),
              "/blocks/L/set/T: L.T: fixed value 2500 lies above the upper bound 1995");
    EXPECT_EQ(InputErrorOf(sheet(R"("globals": {"T_MIN": 0}, )", R"({"value": -5, "spec": "Fixed"})")),
              "/blocks/L/set/T: L.T: fixed value -5 lies below the lower bound 0");
    EXPECT_EQ(InputErrorOf(sheet(R"("globals": {"T_MAX": 3000}, )", R"({"value": 2500, "spec": "Fixed"})")), "no error");
    EXPECT_EQ(InputErrorOf(sheet("", "2500")), "no error");
}

}  // namespace
}  // namespace zx::flowsheet
