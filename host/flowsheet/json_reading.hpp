#pragma once
// Reading JSON text for flowsheet files: syntax errors located by line and column, and keys
// repeated within one object refused (a JSON reader would silently keep only the last one).
#include <string>

#include <nlohmann/json.hpp>

namespace zx::flowsheet {

// Objects keep their keys in file order: blocks are set up in the order the file lists them.
using Json = nlohmann::ordered_json;

// Parses text; throws InputError located at "line:column" for a syntax error, or at the JSON
// pointer of a repeated key.
Json ParseJsonText(const std::string& text);

// JSON pointer text: "/blocks/R1" + "set" -> "/blocks/R1/set" ("~" and "/" escaped).
std::string PointerChild(const std::string& pointer, const std::string& key);
std::string PointerChild(const std::string& pointer, std::size_t index);

// A short rendering of a JSON value for messages (long texts and containers abbreviated).
std::string JsonBrief(const Json& value);

}  // namespace zx::flowsheet
