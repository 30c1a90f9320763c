#pragma once
// The flowsheet file, read and checked for form: component lists, global values and blocks
// with the values to set on their properties, each with where it stands in the file. Whether
// a property, index or value exists and fits is decided when the values are applied to the
// blocks (see flowsheet.hpp); this reader only checks the shape of the file, so that nothing
// is set up from a file half read.
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "flowsheet/input_value.hpp"
#include "flowsheet/json_pointer.hpp"
#include "flowsheet/json_reader.hpp"
#include "zorexp/text.hpp"

namespace zx::flowsheet {

struct ComponentListSpec {
    std::string name;
    std::vector<std::string> components;
    std::map<std::string, SUValue> options;   // "KBASE", "SEGMENTS", ...
    std::string pointer;
    SourcePos pos;
};

// One value to set: a property path and what to set on it (a value, an attribute object
// {"value", "spec", "lower", "upper"}, or for arrays a list or an object keyed by index).
struct SetEntry {
    std::string path;      // "NPTS", "T_CELL(3)", "IN_HS.Q"
    InputValue value;
    std::string pointer;   // where it stands in the file, e.g. "/blocks/R1/set/NPTS"
    SourcePos pos;         // of its key
};

struct BlockSpec {
    std::string name;
    std::string type;
    std::string componentList;   // empty: the block uses the default (first) list
    std::vector<SetEntry> sets;  // in file order
    std::string pointer;
    SourcePos pos, typePos, componentsPos;
    // External references bound by path: path = the reference's name, value = "BLOCK.PATH".
    std::vector<SetEntry> links;
};

// A connection: an outlet port joined to an inlet port, each "BLOCK.PORT"; a multiport end
// takes the connection's name (by default the other end's block name).
struct ConnectionSpec {
    std::string from, to, name;
    std::string pointer;
    SourcePos pos, fromPos, toPos;
};

struct FlowsheetDocument {
    std::vector<ComponentListSpec> componentLists;   // the first is the default
    std::vector<SetEntry> globals;                   // path = the global's name
    std::vector<BlockSpec> blocks;                   // in file order

    // The line and column of the entry a pointer names ("/blocks/R1/type"), when the document
    // holds it; for errors found after reading, which know only the pointer.
    SourcePos PositionOf(const std::string& pointer) const;
    std::vector<ConnectionSpec> connections;         // in file order
};

// Reads and checks the form of a flowsheet file's text; throws InputError.
FlowsheetDocument ReadFlowsheetText(std::string_view text, const ReadingLimits& limits = {});
// Reads a file; throws InputError (located at the file itself when it cannot be read).
FlowsheetDocument ReadFlowsheetFile(const std::string& path, const ReadingLimits& limits = {});

// The keys of an attribute object, and whether an object is one (all keys among them).
bool IsAttributeKey(std::string_view key);
bool IsAttributeObject(const InputValue& value);

}  // namespace zx::flowsheet
