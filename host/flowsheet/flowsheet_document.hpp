#pragma once
// The flowsheet file, read and checked for form: component lists, global values and blocks
// with the values to set on their properties. Whether a property, index or value exists and
// fits is decided when the values are applied to the blocks (see flowsheet.hpp); this reader
// only checks the shape of the file, so that nothing is set up from a file half read.
#include <map>
#include <string>
#include <vector>

#include "flowsheet/json_reading.hpp"
#include "zorexp/text.hpp"

namespace zx::flowsheet {

struct ComponentListSpec {
    std::string name;
    std::vector<std::string> components;
    std::map<std::string, SUValue> options;   // "KBASE", "SEGMENTS", ...
    std::string pointer;
};

// One value to set: a property path and what to set on it (a value, an attribute object
// {"value", "spec", "lower", "upper"}, or for arrays a list or an object keyed by index).
struct SetEntry {
    std::string path;      // "NPTS", "T_CELL(3)", "IN_HS.Q"
    Json value;
    std::string pointer;   // where it stands in the file, e.g. "/blocks/R1/set/NPTS"
};

struct BlockSpec {
    std::string name;
    std::string type;
    std::string componentList;   // empty: the block uses the default (first) list
    std::vector<SetEntry> sets;  // in file order
    std::string pointer;
};

// A connection: an outlet port joined to an inlet port, each "BLOCK.PORT"; a multiport end
// takes the connection's name (by default the other end's block name).
struct ConnectionSpec {
    std::string from, to, name;
    std::string pointer;
};

struct FlowsheetDocument {
    std::vector<ComponentListSpec> componentLists;   // the first is the default
    std::vector<SetEntry> globals;                   // path = the global's name
    std::vector<BlockSpec> blocks;                   // in file order
    std::vector<ConnectionSpec> connections;         // in file order
};

// Reads and checks the form of a flowsheet file's text; throws InputError.
FlowsheetDocument ReadFlowsheetText(const std::string& text);
FlowsheetDocument ReadFlowsheet(const Json& doc);
// Reads a file; throws InputError (located at the file itself when it cannot be read).
FlowsheetDocument ReadFlowsheetFile(const std::string& path);

// The keys of an attribute object, and whether an object is one (all keys among them).
bool IsAttributeKey(const std::string& key);
bool IsAttributeObject(const Json& value);

}  // namespace zx::flowsheet
