// Reading flowsheet files: every fault of form is refused with its location.
#include "flowsheet_test_support.hpp"

namespace zx::flowsheet {
namespace {

std::string ReadError(const std::string& text) {
    try {
        ReadFlowsheetText(text);
    } catch (const InputError& e) {
        return e.Location() + ": " + e.what();
    }
    return "no error";
}

TEST(FlowsheetReading, SyntaxErrorsAreLocatedByLineAndColumn) {
    EXPECT_EQ(ReadError("{\n  \"blocks\": {\n    \"R1\": {\"type\": RPLUG}\n  }\n}").substr(0, 5), "3:20:");
    // A file that ends early is located just past its end.
    EXPECT_EQ(ReadError("{\"blocks\": {").substr(0, 5), "1:13:");
    EXPECT_EQ(ReadError("").substr(0, 4), "1:1:");
}

TEST(FlowsheetReading, KeyGivenTwiceIsLocatedByPointer) {
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A", "set": {"NPTS": 1, "NPTS": 2}}}})"),
              "/blocks/R1/set/NPTS: key given twice in the same object");
    // Keys repeated in different objects are fine, and so are repeated list items.
    EXPECT_EQ(ReadError(R"({"components": {"a": ["X"], "b": ["X"]}, "blocks": {"R1": {"type": "A", "set": {"L": [1, 1]}}}})"),
              "no error");
}

TEST(FlowsheetReading, UnknownKeysAreErrorsReservedOnesAreNot) {
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A"}}, "streams": []})"),
              "/streams: unknown key \"streams\" in a flowsheet (known keys: version, description, components, "
              "globals, blocks, connections)");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A", "sets": {}}}})").substr(0, 15), "/blocks/R1/sets");
    EXPECT_EQ(ReadError(R"({"version": 1, "blocks": {"R1": {"type": "A", "ports": {}}}, "connections": []})"), "no error");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A"}}, "connections": [{"from": "R1.OUT"}]})"),
              "/connections: not implemented: streams joining blocks are not supported yet");
    EXPECT_EQ(ReadError(R"({"version": 2, "blocks": {"R1": {"type": "A"}}})"),
              "/version: this program reads flowsheet files of version 1, not 2");
}

TEST(FlowsheetReading, BlocksNeedANameATypeAndAnObject) {
    EXPECT_EQ(ReadError(R"({"blocks": {}})"), "/blocks: the flowsheet has no blocks");
    EXPECT_EQ(ReadError(R"({"components": {}})"), ": the flowsheet has no \"blocks\"");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"set": {}}}})"), "/blocks/R1: block R1 has no \"type\"");
    EXPECT_EQ(ReadError(R"({"blocks": {"R.1": {"type": "A"}}})"),
              "/blocks/R.1: block name \"R.1\" may hold only letters, digits, '_' and '-'");
    EXPECT_EQ(ReadError(R"({"blocks": {"r1": {"type": "A"}, "R1": {"type": "A"}}})"),
              "/blocks/R1: block \"R1\" is defined twice (names are compared without regard to case)");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": 7}}})"), "/blocks/R1/type: expects a type name, got an integer 7");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A", "set": {"NPTS": null}}}})"),
              "/blocks/R1/set/NPTS: null is not a value; leave the entry out to keep the default");
}

TEST(FlowsheetReading, ComponentListsAndTheirUse) {
    const auto doc = ReadFlowsheetText(R"({"components": {"main": ["A", "B"], "wide": {"names": ["A", "B", "C"],
        "options": {"kbase": 1, "segments": "S1"}}}, "blocks": {"R1": {"type": "X", "components": "WIDE"}}})");
    ASSERT_EQ(doc.componentLists.size(), 2u);
    EXPECT_EQ(doc.componentLists[0].name, "main");   // the first is the default
    EXPECT_EQ(doc.componentLists[1].options.at("KBASE").Integer(), 1);
    EXPECT_STREQ(doc.componentLists[1].options.at("SEGMENTS").String(), "S1");
    EXPECT_EQ(doc.blocks[0].componentList, "wide");

    EXPECT_EQ(ReadError(R"({"components": {"main": ["A", "a"]}, "blocks": {"R1": {"type": "X"}}})"),
              "/components/main/1: component \"a\" is listed twice");
    EXPECT_EQ(ReadError(R"({"components": {"main": ["A"]}, "blocks": {"R1": {"type": "X", "components": "other"}}})"),
              "/blocks/R1/components: block R1: no component list \"other\" (defined: main)");
    EXPECT_EQ(ReadError(R"({"components": {"main": {"names": ["A"], "options": {"KBASE": true}}}, "blocks": {"R1": {"type": "X"}}})"),
              "/components/main/options/KBASE: expects a text or a number, got a logical true");
}

TEST(FlowsheetReading, BlocksKeepFileOrder) {
    const auto doc = ReadFlowsheetText(R"({"blocks": {"Z": {"type": "A"}, "B": {"type": "A"}, "M": {"type": "A",
        "set": {"Y": 1, "X": 2}}}})");
    ASSERT_EQ(doc.blocks.size(), 3u);
    EXPECT_EQ(doc.blocks[0].name + doc.blocks[1].name + doc.blocks[2].name, "ZBM");
    EXPECT_EQ(doc.blocks[2].sets[0].path + doc.blocks[2].sets[1].path, "YX");
    EXPECT_EQ(doc.blocks[2].sets[1].pointer, "/blocks/M/set/X");
}

}  // namespace
}  // namespace zx::flowsheet
