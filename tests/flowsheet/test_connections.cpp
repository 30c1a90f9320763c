// Blocks joined by connections: the port variables matched by name, one equation per matched
// pair, the flags that tell a port it is connected, multiport ends, and the refusals that name
// both ends. The types are test-only descriptions (tests/descriptions).
#include "flowsheet_test_support.hpp"

#include "test_mixer.hpp"
#include "test_sink.hpp"
#include "test_source.hpp"

namespace zx::flowsheet {
namespace {

VX_Type* CreateTestBlock(const std::string& type, std::string& error) {
    VX_Type* made = nullptr;
    if (type == "TESTSOURCE") made = new VX_TESTSOURCE(true);
    else if (type == "TESTSINK") made = new VX_TESTSINK(true);
    else if (type == "TESTMIXER") made = new VX_TESTMIXER(true);
    else return testing::CreateBlock(type, error);
    made->AddRef();
    return made;
}

using testing::Block;
using testing::Sheet;
using testing::Solved;

Solved Solve(const FlowsheetDocument& doc) { return testing::Solve(doc, CreateTestBlock); }

template <class T>
T& BlockNamed(Flowsheet& f, const std::string& name) {
    for (const auto& b : f.Blocks())
        if (b.name == name) return dynamic_cast<T&>(*b.model);
    throw std::logic_error("no block " + name);
}

// The whole system's entries are not kept through the solve; recorded again afterwards (blocks
// and a connection, several units), they are the ones the solver's pattern was taken from.
TEST(Connections, EntriesRecordedAgainAfterTheSolveAreThoseTheSolverUsed) {
    const Solved s = Solve(Sheet({Block("S", "TESTSOURCE"), Block("K", "TESTSINK")}, {{"S.OUT", "K.IN", "", "", {}, {}, {}}}));
    ASSERT_EQ(s.result.status, zx::solve::SolveStatus::Converged) << s.result.message;
    const EquationSystem& e = *s.system;
    ASSERT_EQ(e.EntryRows().size(), static_cast<std::size_t>(e.Entries()));
    ASSERT_EQ(e.EntryColumns().size(), static_cast<std::size_t>(e.Entries()));
    const auto& pattern = e.UnknownPattern();
    ASSERT_EQ(e.KeptEntries().size(), pattern.rows.size());
    ASSERT_LT(e.KeptEntries().size(), static_cast<std::size_t>(e.Entries()));   // fixed columns were left out
    for (std::size_t t = 0; t < e.KeptEntries().size(); ++t) {
        const auto k = static_cast<std::size_t>(e.KeptEntries()[t]);
        EXPECT_EQ(e.EntryRows()[k], pattern.rows[t]);
        EXPECT_EQ(e.UnknownOfColumn()[static_cast<std::size_t>(e.EntryColumns()[k])], pattern.cols[t]);
    }
}

TEST(Connections, JoinedBlocksSolveAsOneAndEachAloneGivesTheSameAnswer) {
    const Solved s = Solve(Sheet({Block("S", "TESTSOURCE"), Block("K", "TESTSINK")}, {{"S.OUT", "K.IN", "", "", {}, {}, {}}}));
    ASSERT_EQ(s.result.status, zx::solve::SolveStatus::Converged) << s.result.message;
    auto& source = BlockNamed<VX_TESTSOURCE>(*s.sheet, "S");
    auto& sink = BlockNamed<VX_TESTSINK>(*s.sheet, "K");
    // Q0 keeps its type's default; the sink sees twice it, plus one.
    EXPECT_DOUBLE_EQ(sink.Q.fv(), 2.0 * source.Q0.fv() + 1.0);
    EXPECT_DOUBLE_EQ(sink.X("B").fv(), source.Z0("B").fv());
    // Both ends know they are connected and which variables are matched.
    EXPECT_TRUE(source.OUT.IsConnected());
    EXPECT_TRUE(sink.IN.IsConnected());
    EXPECT_TRUE(sink.IN.X("A").Flag(VX_ATTR_ISMATCHED));
    EXPECT_FALSE(sink.X("A").Flag(VX_ATTR_ISMATCHED));
    // The port took its owner's components, and the rows name both ends.
    EXPECT_EQ(sink.IN.X.Size(), 2);
    std::string names;
    for (int row = 0; row < s.system->Rows(); ++row) names += s.system->EquationName(row) + "\n";
    EXPECT_NE(names.find("connection S.OUT -> K.IN: X(B)"), std::string::npos) << names;

    // The sink alone, its inlet fixed at what the source gave it: the same answer.
    FlowsheetDocument alone = Sheet({Block("K", "TESTSINK")}, {});
    const double q = sink.IN.Q.fv(), a = sink.IN.X("A").fv(), b = sink.IN.X("B").fv();
    alone.blocks[0].sets.push_back(testing::Entry("IN.Q", Json{{"value", q}, {"spec", "Fixed"}}, "/blocks/K/set/IN.Q"));
    alone.blocks[0].sets.push_back(testing::Entry("IN.X", Json{{"value", {a, b}}, {"spec", "Fixed"}}, "/blocks/K/set/IN.X"));
    const Solved k = Solve(alone);
    ASSERT_EQ(k.result.status, zx::solve::SolveStatus::Converged) << k.result.message;
    EXPECT_DOUBLE_EQ(BlockNamed<VX_TESTSINK>(*k.sheet, "K").Q.fv(), sink.Q.fv());
}

TEST(Connections, AMultiportTakesNamedConnections) {
    const Solved s = Solve(Sheet({Block("S1", "TESTSOURCE"), Block("S2", "TESTSOURCE"), Block("M", "TESTMIXER")},
                                 {{"S1.OUT", "M.IN", "", "", {}, {}, {}}, {"S2.OUT", "M.IN", "SECOND", "", {}, {}, {}}}));
    ASSERT_EQ(s.result.status, zx::solve::SolveStatus::Converged) << s.result.message;
    auto& mixer = BlockNamed<VX_TESTMIXER>(*s.sheet, "M");
    ASSERT_EQ(mixer.IN.Size(), 2);
    EXPECT_EQ(mixer.IN.Connections().fv().Members(), (std::vector<std::string>{"S1", "SECOND"}));
    const double q0 = BlockNamed<VX_TESTSOURCE>(*s.sheet, "S1").Q0.fv();
    EXPECT_DOUBLE_EQ(mixer.Q.fv(), 4.0 * q0);
    EXPECT_EQ(s.sheet->NameOf(mixer.IN(("SECOND")).Q), "M.IN(SECOND).Q");
}

TEST(Connections, RefusalsNameBothEnds) {
    struct Case {
        std::vector<BlockSpec> blocks;
        std::vector<ConnectionSpec> connections;
        const char* message;
    };
    const Case cases[] = {
        {{Block("S", "TESTSOURCE"), Block("T", "TESTSOURCE")}, {{"S.OUT", "T.OUT", "", "", {}, {}, {}}},
         "S.OUT is an outlet and T.OUT is an outlet"},
        {{Block("S", "TESTSOURCE"), Block("K", "TESTSINK"), Block("L", "TESTSINK")},
         {{"S.OUT", "K.IN", "", "", {}, {}, {}}, {"S.OUT", "L.IN", "", "", {}, {}, {}}}, "S.OUT is connected already (to K.IN)"},
        {{Block("S", "TESTSOURCE"), Block("C", "RPLUG_TCOOL1")}, {{"S.OUT", "C.NPTS", "", "", {}, {}, {}}}, "C.NPTS is not a port"},
        {{Block("S", "TESTSOURCE")}, {{"S.OUT", "NOBODY.IN", "", "", {}, {}, {}}}, "no block named NOBODY"},
        {{Block("S1", "TESTSOURCE"), Block("S2", "TESTSOURCE"), Block("M", "TESTMIXER")},
         {{"S1.OUT", "M.IN", "X", "", {}, {}, {}}, {"S2.OUT", "M.IN", "x", "", {}, {}, {}}}, "has a connection named x already"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        try {
            Flowsheet::Build(Sheet(c.blocks, c.connections), CreateTestBlock);
            ADD_FAILURE() << "accepted";
        } catch (const InputError& e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
            EXPECT_EQ(e.Location().rfind("/connections/", 0), 0u) << e.Location();
        }
    }
}

}  // namespace
}  // namespace zx::flowsheet
