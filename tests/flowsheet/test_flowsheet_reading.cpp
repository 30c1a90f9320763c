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

// "line:column: message" of a fault of syntax or range, found while reading.
std::string PlaceAndMessage(const std::string& text) {
    try {
        ReadFlowsheetText(text);
    } catch (const InputError& e) {
        return e.Position().Text() + ": " + e.what();
    }
    return "no error";
}

// A block whose "set" holds one entry with the given value text.
std::string WithValue(const std::string& value) {
    return R"({"blocks": {"R1": {"type": "A", "set": {"X": )" + value + "}}}}";
}

TEST(FlowsheetReading, SyntaxErrorsAreLocatedByLineAndColumn) {
    EXPECT_EQ(ReadError("{\n  \"blocks\": {\n    \"R1\": {\"type\": RPLUG}\n  }\n}").substr(0, 5), "3:20:");
    // A file that ends early is located just past its end.
    EXPECT_EQ(ReadError("{\"blocks\": {").substr(0, 5), "1:13:");
    EXPECT_EQ(ReadError("").substr(0, 4), "1:1:");
    EXPECT_EQ(PlaceAndMessage(WithValue("[1, 2,]")), "1:52: syntax error: expected a value after ',', found ']'");
    EXPECT_EQ(PlaceAndMessage(R"({"blocks": {"R1": {"type": "A",}}})"), "1:32: syntax error: expected a key in double quotes, found '}'");
    EXPECT_EQ(PlaceAndMessage(R"({"blocks" {}})"), "1:11: syntax error: expected ':' after a key, found '{'");
    EXPECT_EQ(PlaceAndMessage(WithValue("012")), "1:46: syntax error: a number may not start with 0 followed by digits");
    EXPECT_EQ(PlaceAndMessage(WithValue("1.")), "1:48: syntax error: expected a digit, found '}'");
    EXPECT_EQ(PlaceAndMessage(WithValue("\"open")), "1:55: syntax error: a text is not closed before the end of the input");
    EXPECT_EQ(PlaceAndMessage(WithValue("tru")), "1:46: syntax error: invalid literal; expected a value such as true, false, "
                                                  "null, a number, a text, an object or a list");
    EXPECT_EQ(PlaceAndMessage(R"({"blocks": {"R1": {"type": "A"}}} {})"), "1:35: syntax error: expected the end of the input "
                                                                          "after the top-level value, found '{'");
    // Lines count newlines only; columns count bytes from 1.
    EXPECT_EQ(PlaceAndMessage("\r\n\n  \t@"), "3:4: syntax error: expected a value, found '@'");
}

TEST(FlowsheetReading, LimitsOfNestingAndNumbersAreCheckedWhileReading) {
    auto nested = [](std::size_t depth) { return WithValue(std::string(depth, '[') + std::string(depth, ']')); };
    // The file's own object, "blocks", "R1" and "set" take four levels.
    EXPECT_EQ(ReadError(nested(252)), "no error");
    EXPECT_EQ(PlaceAndMessage(nested(253)), "1:298: objects and lists are nested more than 256 deep");
    EXPECT_EQ(PlaceAndMessage(std::string(100000, '[')), "1:257: objects and lists are nested more than 256 deep");
    ReadingLimits shallow;
    shallow.maxDepth = 4;
    EXPECT_THROW(ReadFlowsheetText(WithValue("[1]"), shallow), InputError);

    EXPECT_EQ(PlaceAndMessage(WithValue("-1e309")),
              "1:46: number -1e309 is too large to be held as a real number (about 4.9e-324 to 1.8e308)");
    EXPECT_EQ(PlaceAndMessage(WithValue("[0, 1e-400]")).substr(0, 45), "1:50: number 1e-400 is too close to zero to b");
    EXPECT_EQ(PlaceAndMessage(WithValue(std::string(400, '9'))).substr(0, 75),
              "1:46: number 999999999999999999999999999999999999999999999999999999999999..");
    // Numbers side by side, each knowing whether it was written as an integer.
    const auto doc = ReadFlowsheetText(WithValue("[2147483648, -0, 4.9e-324]"));
    const InputValue& list = doc.blocks[0].sets[0].value;
    ASSERT_TRUE(list.IsNumberList());
    EXPECT_TRUE(list.IsIntegerItem(0) && list.IsIntegerItem(1) && !list.IsIntegerItem(2));
    EXPECT_FALSE(list.NumberItem(0).IsInt32());
    EXPECT_TRUE(list.NumberItem(1).IsInt32());
    // Integers beyond 64 bits are still numbers, keeping their text for messages; whether they
    // fit is for the property to say.
    const auto wide = ReadFlowsheetText(WithValue("[1, 18446744073709551615]"));
    const InputValue& item = wide.blocks[0].sets[0].value.Items()[1];
    EXPECT_EQ(item.Number(), 18446744073709551615.0);
    EXPECT_EQ(item.Brief(), "18446744073709551615");
}

TEST(FlowsheetReading, TextsAreUtf8WithoutControlCharacters) {
    auto text = [](const std::string& json) { return ReadFlowsheetText(WithValue(json)).blocks[0].sets[0].value.Text(); };
    EXPECT_EQ(text(R"("caf\u00e9 \ud83d\ude00 \t\"\\\/")"), "caf\xC3\xA9 \xF0\x9F\x98\x80 \t\"\\/");
    EXPECT_EQ(text("\"\xE2\x82\xAC\""), "\xE2\x82\xAC");
    EXPECT_EQ(ReadFlowsheetText("\xEF\xBB\xBF" + WithValue("1")).blocks.size(), 1u);   // a byte order mark

    EXPECT_EQ(PlaceAndMessage(WithValue("\"a\xFF\"")), "1:48: a text is not UTF-8 (byte 0xFF)");
    EXPECT_EQ(PlaceAndMessage(WithValue("\"\xC0\xAF\"")), "1:47: a text is not UTF-8 (byte 0xC0)");   // overlong '/'
    EXPECT_EQ(PlaceAndMessage(WithValue("\"a\tb\"")), "1:48: a text holds a control character (byte 0x09): write it as "
                                                      "an escape such as \\n or \\t");
    EXPECT_EQ(PlaceAndMessage(WithValue(R"("x\ud800y")")), "1:48: a text holds half of a UTF-16 surrogate pair");
    EXPECT_EQ(PlaceAndMessage(WithValue(R"("\udc00")")), "1:47: a text holds half of a UTF-16 surrogate pair");
    EXPECT_EQ(PlaceAndMessage(WithValue(R"("\u0000")")).substr(0, 45), "1:47: a text holds the character U+0000, whic");
    EXPECT_EQ(PlaceAndMessage(WithValue(R"("\x")")).substr(0, 36), "1:48: syntax error: expected an esca");
    EXPECT_EQ(PlaceAndMessage(WithValue(R"("\u12g4")")).substr(0, 30), "1:51: syntax error: expected f");
}

TEST(FlowsheetReading, KeyGivenTwiceIsRefusedWithBothPlaces) {
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A", "set": {"NPTS": 1, "NPTS": 2}}}})"),
              "/blocks/R1/set/NPTS: \"NPTS\" is given twice (first at 1:41)");
    // Property paths name the same property in any case and with blanks inside.
    EXPECT_EQ(ReadError(R"j({"blocks": {"R1": {"type": "A", "set": {"T(1)": 1, "npts": 1, "t( 1 )": 2}}}})j"),
              "/blocks/R1/set/t( 1 ): \"t( 1 )\" names the same property as \"T(1)\" at 1:41 (names are compared without "
              "regard to case)");
    EXPECT_EQ(ReadError(R"({"globals": {"PI": 3, "pi": 3.1}, "blocks": {"R1": {"type": "A"}}})").substr(0, 13), "/globals/pi: ");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A", "type": "B"}}})"), "/blocks/R1/type: key \"type\" is given twice");
    // Inside values, a repeated key is located by line and column.
    EXPECT_EQ(PlaceAndMessage(WithValue("{\"value\": 1,\n \"value\": 2}")),
              "2:2: key \"value\" is given twice in the same object (first at 1:47)");
    // Keys repeated in different objects are fine, and so are repeated list items.
    EXPECT_EQ(ReadError(R"({"components": {"a": ["X"], "b": ["X"]}, "blocks": {"R1": {"type": "A", "set": {"L": [1, 1]}}}})"),
              "no error");
    // Beyond a few keys, repeats are found by hashing: the same answer.
    std::string many = "{";
    for (int k = 0; k < 100; ++k) many += "\"k" + std::to_string(k) + "\": 1, ";
    EXPECT_EQ(PlaceAndMessage(WithValue(many + "\"k42\": 2}")),
              "1:1037: key \"k42\" is given twice in the same object (first at 1:457)");
}

TEST(FlowsheetReading, UnknownKeysAreErrorsReservedOnesAreNot) {
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A"}}, "streams": []})"),
              "/streams: unknown key \"streams\" in a flowsheet (known keys: version, description, components, "
              "globals, blocks, connections)");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A", "sets": {}}}})").substr(0, 15), "/blocks/R1/sets");
    EXPECT_EQ(ReadError(R"({"version": 1, "blocks": {"R1": {"type": "A", "ports": {}}}, "connections": []})"), "no error");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A"}}, "connections": [{"from": "R1.OUT"}]})"),
              "/connections/0: a connection needs \"to\"");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A"}}, "connections": [{"from": "R1.OUT", "to": "R2"}]})"),
              "/connections/0/to: connection R1.OUT -> R2: end \"R2\" is not BLOCK.PORT");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A"}}, "connections": [{"from": "A.B", "to": "C.D", "via": 1}]})"),
              "/connections/0/via: unknown key \"via\" in a connection (known keys: from, to, name)");
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A"}}, "connections": {"from": "A.B"}})").substr(0, 13), "/connections:");
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
    EXPECT_EQ(ReadError(R"({"blocks": {"R1": {"type": "A", "set": [1, 2, 3, 4, 5]}}})"),
              "/blocks/R1/set: expects an object of property paths and values, got a list [1, 2, 3, 4, ...]");
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
