#include "flowsheet/flowsheet_document.hpp"

#include <fstream>
#include <initializer_list>
#include <sstream>

#include "flowsheet/input_error.hpp"

namespace zx::flowsheet {
namespace {

const char* KindOf(const Json& v) {
    switch (v.type()) {
    case Json::value_t::object: return "an object";
    case Json::value_t::array: return "a list";
    case Json::value_t::string: return "a text";
    case Json::value_t::boolean: return "a logical";
    case Json::value_t::null: return "null";
    case Json::value_t::number_float: return "a real number";
    default: return "an integer";
    }
}

[[noreturn]] void Wrong(const std::string& pointer, const char* expected, const Json& got) {
    throw InputError(pointer, std::string("expects ") + expected + ", got " + KindOf(got) + " " + JsonBrief(got));
}

void ExpectKeys(const Json& object, const std::string& pointer, std::initializer_list<const char*> known,
                const char* what) {
    for (const auto& [key, value] : object.items()) {
        bool ok = false;
        for (const char* k : known) ok = ok || key == k;
        if (ok) continue;
        std::string list;
        for (const char* k : known) list += std::string(list.empty() ? "" : ", ") + k;
        throw InputError(PointerChild(pointer, key), "unknown key \"" + key + "\" in " + what + " (known keys: " + list + ")");
    }
}

std::string Upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

// Block names become the first part of "R1.T_COOL", so they may not contain path syntax.
bool ValidBlockName(const std::string& name) {
    if (name.empty()) return false;
    for (char c : name)
        if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-')) return false;
    return true;
}

std::vector<std::string> ReadNames(const Json& list, const std::string& pointer) {
    if (!list.is_array()) Wrong(pointer, "a list of component names", list);
    std::vector<std::string> names;
    std::map<std::string, std::size_t> seen;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string at = PointerChild(pointer, i);
        if (!list[i].is_string() || list[i].get<std::string>().empty()) Wrong(at, "a component name", list[i]);
        const std::string name = list[i].get<std::string>();
        if (name.find('"') != std::string::npos) throw InputError(at, "component name " + JsonBrief(list[i]) + " contains a double quote");
        if (!seen.emplace(Upper(name), i).second)
            throw InputError(at, "component \"" + name + "\" is listed twice");
        names.push_back(name);
    }
    return names;
}

SUValue ReadOption(const Json& v, const std::string& pointer) {
    if (v.is_string()) return SUValue(v.get<std::string>());
    if (v.is_number_integer()) {
        const auto x = v.get<long long>();
        if (x < INT32_MIN || x > INT32_MAX) throw InputError(pointer, "option value " + v.dump() + " is out of the integer range");
        return SUValue(static_cast<int>(x));
    }
    if (v.is_number_float()) return SUValue(v.get<double>());
    Wrong(pointer, "a text or a number", v);
}

void ReadComponentLists(const Json& section, FlowsheetDocument& doc) {
    const std::string pointer = "/components";
    if (!section.is_object()) Wrong(pointer, "an object of named component lists", section);
    std::map<std::string, std::string> seen;
    for (const auto& [name, entry] : section.items()) {
        const std::string at = PointerChild(pointer, name);
        if (name.empty()) throw InputError(at, "a component list needs a name");
        if (!seen.emplace(Upper(name), name).second)
            throw InputError(at, "component list \"" + name + "\" is defined twice (names are compared without regard to case)");
        ComponentListSpec list{name, {}, {}, at};
        if (entry.is_object()) {
            ExpectKeys(entry, at, {"names", "options"}, "a component list");
            if (!entry.contains("names")) throw InputError(at, "component list \"" + name + "\" has no \"names\"");
            list.components = ReadNames(entry["names"], PointerChild(at, "names"));
            if (entry.contains("options")) {
                const Json& options = entry["options"];
                const std::string opAt = PointerChild(at, "options");
                if (!options.is_object()) Wrong(opAt, "an object of list options", options);
                for (const auto& [key, value] : options.items()) {
                    if (!list.options.emplace(Upper(key), ReadOption(value, PointerChild(opAt, key))).second)
                        throw InputError(PointerChild(opAt, key), "option \"" + key + "\" is given twice");
                }
            }
        } else {
            list.components = ReadNames(entry, at);
        }
        doc.componentLists.push_back(std::move(list));
    }
}

void CheckSetValue(const Json& value, const std::string& pointer) {
    if (value.is_null()) throw InputError(pointer, "null is not a value; leave the entry out to keep the default");
    if (value.is_object() && value.empty()) throw InputError(pointer, "an empty object sets nothing");
}

std::vector<SetEntry> ReadSets(const Json& section, const std::string& pointer, const char* what) {
    if (!section.is_object()) Wrong(pointer, what, section);
    std::vector<SetEntry> sets;
    for (const auto& [path, value] : section.items()) {
        const std::string at = PointerChild(pointer, path);
        if (path.empty()) throw InputError(at, "empty property path");
        CheckSetValue(value, at);
        sets.push_back(SetEntry{path, value, at});
    }
    return sets;
}

const ComponentListSpec* FindList(const FlowsheetDocument& doc, const std::string& name) {
    for (const auto& l : doc.componentLists)
        if (Upper(l.name) == Upper(name)) return &l;
    return nullptr;
}

void ReadBlocks(const Json& section, FlowsheetDocument& doc) {
    const std::string pointer = "/blocks";
    if (!section.is_object()) Wrong(pointer, "an object of named blocks", section);
    if (section.empty()) throw InputError(pointer, "the flowsheet has no blocks");
    std::map<std::string, std::string> seen;
    for (const auto& [name, entry] : section.items()) {
        const std::string at = PointerChild(pointer, name);
        if (!ValidBlockName(name))
            throw InputError(at, "block name \"" + name + "\" may hold only letters, digits, '_' and '-'");
        if (!seen.emplace(Upper(name), name).second)
            throw InputError(at, "block \"" + name + "\" is defined twice (names are compared without regard to case)");
        if (!entry.is_object()) Wrong(at, "an object with \"type\" and \"set\"", entry);
        ExpectKeys(entry, at, {"type", "components", "set", "description", "ports"}, "a block");
        BlockSpec block{name, {}, {}, {}, at};
        if (!entry.contains("type")) throw InputError(at, "block " + name + " has no \"type\"");
        const Json& type = entry["type"];
        if (!type.is_string() || type.get<std::string>().empty()) Wrong(PointerChild(at, "type"), "a type name", type);
        block.type = type.get<std::string>();
        if (entry.contains("components")) {
            const Json& list = entry["components"];
            const std::string listAt = PointerChild(at, "components");
            if (!list.is_string()) Wrong(listAt, "the name of a component list", list);
            const ComponentListSpec* found = FindList(doc, list.get<std::string>());
            if (!found) {
                std::string known;
                for (const auto& l : doc.componentLists) known += (known.empty() ? "" : ", ") + l.name;
                throw InputError(listAt, "block " + name + ": no component list \"" + list.get<std::string>() + "\"" +
                                             (known.empty() ? " (the file defines none)" : " (defined: " + known + ")"));
            }
            block.componentList = found->name;
        }
        if (entry.contains("description") && !entry["description"].is_string())
            Wrong(PointerChild(at, "description"), "a text", entry["description"]);
        if (entry.contains("ports")) {
            const Json& ports = entry["ports"];
            if (!ports.is_object()) Wrong(PointerChild(at, "ports"), "an object", ports);
            if (!ports.empty())
                throw InputError(PointerChild(at, "ports"), "not implemented: ports of blocks cannot be joined yet");
        }
        if (entry.contains("set")) block.sets = ReadSets(entry["set"], PointerChild(at, "set"), "an object of property paths and values");
        doc.blocks.push_back(std::move(block));
    }
}

}  // namespace

bool IsAttributeKey(const std::string& key) {
    return key == "value" || key == "spec" || key == "lower" || key == "upper";
}

bool IsAttributeObject(const Json& value) {
    if (!value.is_object() || value.empty()) return false;
    for (const auto& [key, v] : value.items())
        if (!IsAttributeKey(key)) return false;
    return true;
}

FlowsheetDocument ReadFlowsheet(const Json& root) {
    if (!root.is_object()) Wrong("", "an object with \"components\", \"globals\" and \"blocks\"", root);
    ExpectKeys(root, "", {"version", "description", "components", "globals", "blocks", "connections"}, "a flowsheet");
    FlowsheetDocument doc;
    if (root.contains("version")) {
        const Json& v = root["version"];
        if (!v.is_number_integer() || v.get<long long>() != 1)
            throw InputError("/version", "this program reads flowsheet files of version 1, not " + JsonBrief(v));
    }
    if (root.contains("description") && !root["description"].is_string())
        Wrong("/description", "a text", root["description"]);
    if (root.contains("components")) ReadComponentLists(root["components"], doc);
    if (root.contains("globals")) doc.globals = ReadSets(root["globals"], "/globals", "an object of global names and values");
    if (!root.contains("blocks")) throw InputError("", "the flowsheet has no \"blocks\"");
    ReadBlocks(root["blocks"], doc);
    if (root.contains("connections")) {
        const Json& c = root["connections"];
        if (!c.is_array()) Wrong("/connections", "a list", c);
        if (!c.empty()) throw InputError("/connections", "not implemented: streams joining blocks are not supported yet");
    }
    return doc;
}

FlowsheetDocument ReadFlowsheetText(const std::string& text) { return ReadFlowsheet(ParseJsonText(text)); }

FlowsheetDocument ReadFlowsheetFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw InputError("", "cannot read the file");
    std::ostringstream text;
    text << in.rdbuf();
    return ReadFlowsheetText(text.str());
}

}  // namespace zx::flowsheet
