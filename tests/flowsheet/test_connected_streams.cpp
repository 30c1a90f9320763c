// Library streams and mixers joined in a flowsheet: feeds through material streams into an
// inlet mixer, solved as one system and piece by piece with the same answer; the analysis and
// the results name port variables under their blocks and connections by both ends.
#include "flowsheet_test_support.hpp"

#include "flowsheet/results_output.hpp"
#include "flowsheet/structure_diagnosis.hpp"

namespace zx::flowsheet {
namespace {

using testing::Block;
using testing::Sheet;
using testing::Solve;
using testing::Solved;

// A material stream with its state given (its copies are fixed while nothing is upstream).
BlockSpec Stream(const std::string& name, const Json& state = Json::object()) {
    BlockSpec b = Block(name, "MATERIALSTREAM");
    for (const auto& [path, value] : state.items()) b.sets.push_back(testing::Entry(path, value, b.pointer + "/set/" + path));
    return b;
}

const Json kFirst = {{"F", 10.0}, {"Z", {0.2, 0.8}}, {"T", 50.0}, {"P", 3.0}, {"H", -0.1}};
const Json kSecond = {{"F", 30.0}, {"Z", {0.6, 0.4}}, {"T", 80.0}, {"P", 2.0}, {"H", 0.3}};

VX_Variable& Var(Flowsheet& f, const std::string& path) {
    const auto dot = path.find('.');
    for (const auto& b : f.Blocks())
        if (b.name == path.substr(0, dot)) return dynamic_cast<VX_Variable&>(*VX_ResolvePath(*b.model, path.substr(dot + 1)).object);
    throw std::logic_error("no " + path);
}

TEST(ConnectedStreams, FeedsMixTogetherAndPieceByPieceAlike) {
    // S1 -> S2 -> M, S3 -> M.
    const Solved whole = Solve(Sheet({Stream("S1", kFirst), Stream("S2"), Stream("S3", kSecond), Block("M", "INLETMIXERFWD")},
                                     {{"S1.OUT_F", "S2.IN_F", "", "", {}, {}, {}}, {"S2.OUT_F", "M.IN_F", "", "", {}, {}, {}}, {"S3.OUT_F", "M.IN_F", "", "", {}, {}, {}}}));
    ASSERT_EQ(whole.result.status, zx::solve::SolveStatus::Converged) << whole.result.message;
    Flowsheet& f = *whole.sheet;
    EXPECT_DOUBLE_EQ(Var(f, "M.FIN").fv(), 40.0);
    EXPECT_DOUBLE_EQ(Var(f, "M.ZIN(A)").fv(), (10 * 0.2 + 30 * 0.6) / 40);
    EXPECT_DOUBLE_EQ(Var(f, "M.HIN").fv(), (10 * -0.1 + 30 * 0.3) / 40);
    EXPECT_DOUBLE_EQ(Var(f, "M.PIN").fv(), 2.0);
    EXPECT_DOUBLE_EQ(Var(f, "M.IN_F(S2).T").fv(), 50.0);
    EXPECT_EQ(Var(f, "S2.F").CurrSpec(), VX_SPEC_FREE);   // something is upstream of S2

    // The first piece alone: S1 -> S2.
    const Solved first = Solve(Sheet({Stream("S1", kFirst), Stream("S2")}, {{"S1.OUT_F", "S2.IN_F", "", "", {}, {}, {}}}));
    ASSERT_EQ(first.result.status, zx::solve::SolveStatus::Converged) << first.result.message;
    Json handed = Json::object();
    for (const char* v : {"F", "T", "P", "H", "V", "AV"}) handed[v] = Var(*first.sheet, std::string("S2.OUT_F.") + v).fv();
    handed["Z"] = {Var(*first.sheet, "S2.OUT_F.Z(A)").fv(), Var(*first.sheet, "S2.OUT_F.Z(B)").fv()};
    // The second piece, fed what the first one gave.
    const Solved second = Solve(Sheet({Stream("S2", handed), Stream("S3", kSecond), Block("M", "INLETMIXERFWD")},
                                      {{"S2.OUT_F", "M.IN_F", "", "", {}, {}, {}}, {"S3.OUT_F", "M.IN_F", "", "", {}, {}, {}}}));
    ASSERT_EQ(second.result.status, zx::solve::SolveStatus::Converged) << second.result.message;
    for (const char* v : {"M.FIN", "M.ZIN(A)", "M.ZIN(B)", "M.HIN", "M.PIN", "M.IN_F(S2).V"})
        EXPECT_DOUBLE_EQ(Var(*second.sheet, v).fv(), Var(f, v).fv()) << v;
}

TEST(ConnectedStreams, RowsAndResultsNamePortVariablesAndBothEnds) {
    const Solved s = Solve(Sheet({Stream("S1", kFirst), Block("M", "INLETMIXERFWD")}, {{"S1.OUT_F", "M.IN_F", "FEED1", "", {}, {}, {}}}));
    ASSERT_EQ(s.result.status, zx::solve::SolveStatus::Converged) << s.result.message;
    std::string rows;
    for (int row = 0; row < s.system->Rows(); ++row) rows += s.system->EquationName(row) + "\n";
    EXPECT_NE(rows.find("connection S1.OUT_F -> M.IN_F(FEED1): Z(B)"), std::string::npos) << rows;
    std::ostringstream csv;
    WriteResultsCsv(*s.sheet, csv);
    EXPECT_NE(csv.str().find("S1,OUT_F.T,50,C,Free"), std::string::npos) << csv.str();
    EXPECT_NE(csv.str().find("M,IN_F(FEED1).Z(A),0.2"), std::string::npos) << csv.str();
    EXPECT_DOUBLE_EQ(Var(*s.sheet, "M.ZIN(B)").fv(), 0.8);   // one feed: taken as it is
}

TEST(ConnectedStreams, TheAnalysisNamesWhatToFixAcrossBlocks) {
    // S1's flow given up: one unknown too many, in S1 and its port.
    BlockSpec loose = Stream("S1", kFirst);
    loose.sets[0].value = InputValue::Parse(R"({"value": 10.0, "spec": "Free"})");
    FlowsheetDocument under = Sheet({loose, Block("M", "INLETMIXERFWD")}, {{"S1.OUT_F", "M.IN_F", "", "", {}, {}, {}}});
    auto sheet = Flowsheet::Build(under, testing::CreateBlock);
    EquationSystem system(*sheet);
    const StructureDiagnosis d = DiagnoseStructure(system);
    EXPECT_EQ(d.status, "under_specified");
    ASSERT_EQ(d.faults.size(), 1u);
    EXPECT_EQ(d.faults[0].count, 1);
    const auto& names = d.faults[0].names;
    for (const char* n : {"S1.F", "S1.IN_F.F", "S1.OUT_F.F", "M.IN_F(S1).F", "M.FIN"})
        EXPECT_NE(std::find(names.begin(), names.end(), n), names.end()) << n;

    // A flow fixed at the mixer's port too: the connection's equation names both ends.
    FlowsheetDocument over = Sheet({Stream("S1", kFirst), Block("M", "INLETMIXERFWD")}, {{"S1.OUT_F", "M.IN_F", "", "", {}, {}, {}}});
    over.blocks[1].sets.push_back(testing::Entry("IN_F(S1).F", Json{{"value", 10.0}, {"spec", "Fixed"}}, "/blocks/M/set/IN_F(S1).F"));
    auto sheet2 = Flowsheet::Build(over, testing::CreateBlock);
    EquationSystem system2(*sheet2);
    const StructureDiagnosis d2 = DiagnoseStructure(system2);
    EXPECT_EQ(d2.status, "over_specified");
    std::string named;
    for (const auto& f : d2.faults)
        for (const auto& n : f.names) named += n + "\n";
    EXPECT_NE(named.find("connection S1.OUT_F -> M.IN_F(S1): F"), std::string::npos) << named;
}

TEST(ConnectedStreams, AHeatStreamDoesNotFeedAMaterialInlet) {
    try {
        Flowsheet::Build(Sheet({Block("H", "HEATSTREAM"), Block("M", "INLETMIXERFWD")}, {{"H.OUT_HS", "M.IN_F", "", "", {}, {}, {}}}),
                         testing::CreateBlock);
        ADD_FAILURE() << "accepted";
    } catch (const InputError& e) {
        EXPECT_NE(std::string(e.what()).find("the port types do not fit: H.OUT_HS is a HEATPORT, M.IN_F(H) a MATERIALPORTRP"),
                  std::string::npos)
            << e.what();
    }
}

}  // namespace
}  // namespace zx::flowsheet
