#include "flowsheet/flowsheet_document.hpp"

#include <sys/stat.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <span>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "flowsheet/input_error.hpp"

namespace zx::flowsheet {
namespace {

[[noreturn]] void Wrong(const std::string& pointer, const char* expected, const InputValue& got) {
    throw InputError(pointer, std::string("expects ") + expected + ", got " + got.KindText() + " " + got.Brief(), got.Pos());
}

std::string Upper(std::string_view s) {
    std::string out(s);
    for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

// A property path as compared for repeats: without case and blanks ("t_cell( 3)" = "T_CELL(3)").
std::string PathKey(std::string_view path) {
    std::string out;
    out.reserve(path.size());
    for (char c : path)
        if (c != ' ' && c != '\t') out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

// Finds the earlier entry that names the same property as a new one. Most blocks set a few
// properties, compared pair by pair without making anything; many are indexed by key.
class SeenPaths {
public:
    // The position of an earlier path naming the same property as path, or npos; path is
    // then remembered at position k.
    std::size_t Add(const std::vector<SetEntry>& earlier, const std::string& path, std::size_t k) {
        constexpr std::size_t kPairwise = 16;
        if (earlier.size() < kPairwise) {
            for (std::size_t i = 0; i < earlier.size(); ++i)
                if (Same(earlier[i].path, path)) return i;
            return std::string::npos;
        }
        if (m_index.empty())
            for (std::size_t i = 0; i < earlier.size(); ++i) m_index.emplace(PathKey(earlier[i].path), i);
        auto [it, added] = m_index.emplace(PathKey(path), k);
        return added ? std::string::npos : it->second;
    }

private:
    static bool Same(std::string_view a, std::string_view b) {
        std::size_t i = 0, j = 0;
        for (;;) {
            while (i < a.size() && (a[i] == ' ' || a[i] == '\t')) ++i;
            while (j < b.size() && (b[j] == ' ' || b[j] == '\t')) ++j;
            if (i == a.size() || j == b.size()) return i == a.size() && j == b.size();
            if (std::toupper(static_cast<unsigned char>(a[i++])) != std::toupper(static_cast<unsigned char>(b[j++]))) return false;
        }
    }
    std::unordered_map<std::string, std::size_t> m_index;
};

// Block names become the first part of "R1.T_COOL", so they may not contain path syntax.
bool ValidBlockName(const std::string& name) {
    if (name.empty()) return false;
    for (char c : name)
        if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-')) return false;
    return true;
}

// The keys an object of the file may hold; each at most once.
class KnownKeys {
public:
    KnownKeys(std::span<const char* const> keys, const char* what) : m_keys(keys), m_what(what) {}

    // The key's number in the list; refuses an unknown or repeated key.
    std::size_t Take(const std::string& key, const std::string& pointer, SourcePos at) {
        for (std::size_t k = 0; k < m_keys.size(); ++k) {
            if (key != m_keys[k]) continue;
            if (m_seen & (1u << k)) throw InputError(PointerChild(pointer, key), "key \"" + key + "\" is given twice", at);
            m_seen |= 1u << k;
            return k;
        }
        std::string list;
        for (const char* k : m_keys) list += std::string(list.empty() ? "" : ", ") + k;
        throw InputError(PointerChild(pointer, key),
                         "unknown key \"" + VX_BriefText(key) + "\" in " + m_what + " (known keys: " + list + ")", at);
    }
    bool Seen(std::size_t k) const { return (m_seen & (1u << k)) != 0; }

private:
    std::span<const char* const> m_keys;
    const char* m_what;
    unsigned m_seen = 0;
};

// Enters the object that comes next, or refuses what stands there instead.
void EnterObject(JsonReader& reader, const std::string& pointer, const char* expected) {
    if (reader.Next() != JsonReader::Token::Object) Wrong(pointer, expected, InputValue::Read(reader));
    reader.EnterObject();
}

std::vector<std::string> ReadNames(const InputValue& list, const std::string& pointer) {
    if (list.GetKind() != InputValue::Kind::List) Wrong(pointer, "a list of component names", list);
    if (list.IsNumberList()) Wrong(PointerChild(pointer, std::size_t{0}), "a component name", list.NumberItem(0));
    std::vector<std::string> names;
    std::unordered_map<std::string, std::size_t> seen;
    for (std::size_t i = 0; i < list.Items().size(); ++i) {
        const InputValue& item = list.Items()[i];
        const std::string at = PointerChild(pointer, i);
        if (item.GetKind() != InputValue::Kind::Text || item.Text().empty()) Wrong(at, "a component name", item);
        const std::string& name = item.Text();
        if (name.find('"') != std::string::npos)
            throw InputError(at, "component name " + item.Brief() + " contains a double quote", item.Pos());
        if (!seen.emplace(Upper(name), i).second)
            throw InputError(at, "component " + item.Brief() + " is listed twice", item.Pos());
        names.push_back(name);
    }
    return names;
}

SUValue ReadOption(const InputValue& v, const std::string& pointer) {
    switch (v.GetKind()) {
    case InputValue::Kind::Text: return SUValue(v.Text());
    case InputValue::Kind::Integer:
        if (!v.IsInt32()) throw InputError(pointer, "option value " + v.Brief() + " is out of the integer range", v.Pos());
        return SUValue(static_cast<int>(v.Number()));
    case InputValue::Kind::Real: return SUValue(v.Number());
    default: Wrong(pointer, "a text or a number", v);
    }
}

ComponentListSpec ReadComponentList(const std::string& name, const InputValue& entry, const std::string& at) {
    ComponentListSpec list{name, {}, {}, at, entry.Pos()};
    if (entry.GetKind() != InputValue::Kind::Object) {
        list.components = ReadNames(entry, at);
        return list;
    }
    for (const InputMember& m : entry.Members())
        if (m.key != "names" && m.key != "options")
            throw InputError(PointerChild(at, m.key),
                             "unknown key \"" + VX_BriefText(m.key) + "\" in a component list (known keys: names, options)", m.keyPos);
    const InputValue* names = entry.Find("names");
    if (!names) throw InputError(at, "component list \"" + name + "\" has no \"names\"", entry.Pos());
    list.components = ReadNames(*names, PointerChild(at, "names"));
    if (const InputValue* options = entry.Find("options")) {
        const std::string opAt = PointerChild(at, "options");
        if (options->GetKind() != InputValue::Kind::Object) Wrong(opAt, "an object of list options", *options);
        for (const InputMember& m : options->Members()) {
            const std::string keyAt = PointerChild(opAt, m.key);
            if (!list.options.emplace(Upper(m.key), ReadOption(m.value, keyAt)).second)
                throw InputError(keyAt, "option \"" + VX_BriefText(m.key) + "\" is given twice", m.keyPos);
        }
    }
    return list;
}

// A section of named entries (component lists, blocks): each name is checked (refusal: the
// reason, or empty), names may not repeat without regard to case, and read(name, pointer,
// keyAt) reads the entry's value.
template <class Refusal, class Read>
void ReadNamed(JsonReader& reader, const std::string& pointer, const char* expected, const char* what, Refusal refusal,
               Read read) {
    EnterObject(reader, pointer, expected);
    std::unordered_set<std::string> seen;
    std::string name;
    SourcePos keyAt;
    while (reader.NextKey(name, keyAt)) {
        const std::string at = PointerChild(pointer, name);
        if (const std::string why = refusal(name); !why.empty()) throw InputError(at, why, keyAt);
        if (!seen.insert(Upper(name)).second)
            throw InputError(at, std::string(what) + " \"" + VX_BriefText(name) +
                                     "\" is defined twice (names are compared without regard to case)", keyAt);
        read(name, at, keyAt);
    }
}

void ReadComponentLists(JsonReader& reader, FlowsheetDocument& doc) {
    ReadNamed(
        reader, "/components", "an object of named component lists", "component list",
        [](const std::string& name) { return name.empty() ? std::string("a component list needs a name") : std::string(); },
        [&](const std::string& name, const std::string& at, SourcePos keyAt) {
            doc.componentLists.push_back(ReadComponentList(name, InputValue::Read(reader), at));
            doc.componentLists.back().pos = keyAt;
        });
}

// An object of property paths (or global names) and values; a path given twice, even in
// another case, is refused with both places.
std::vector<SetEntry> ReadSets(JsonReader& reader, const std::string& pointer, const char* what) {
    EnterObject(reader, pointer, what);
    std::vector<SetEntry> sets;
    SeenPaths seen;
    std::string path;
    SourcePos keyAt;
    while (reader.NextKey(path, keyAt)) {
        std::string at = PointerChild(pointer, path);
        if (path.empty()) throw InputError(at, "empty property path", keyAt);
        if (const std::size_t earlier = seen.Add(sets, path, sets.size()); earlier != std::string::npos) {
            const SetEntry& first = sets[earlier];
            throw InputError(at, first.path == path
                                     ? "\"" + VX_BriefText(path) + "\" is given twice (first at " + first.pos.Text() + ")"
                                     : "\"" + VX_BriefText(path) + "\" names the same property as \"" + VX_BriefText(first.path) +
                                           "\" at " + first.pos.Text() + " (names are compared without regard to case)",
                             keyAt);
        }
        InputValue value = InputValue::Read(reader);
        if (value.GetKind() == InputValue::Kind::Null)
            throw InputError(at, "null is not a value; leave the entry out to keep the default", value.Pos());
        if (value.GetKind() == InputValue::Kind::Object && value.Size() == 0)
            throw InputError(at, "an empty object sets nothing", value.Pos());
        sets.push_back(SetEntry{path, std::move(value), std::move(at), keyAt});
    }
    return sets;
}

void ReadBlock(JsonReader& reader, BlockSpec& block) {
    const std::string& at = block.pointer;
    EnterObject(reader, at, "an object with \"type\" and \"set\"");
    static constexpr const char* kKeys[] = {"type", "components", "set", "description", "ports", "links"};
    KnownKeys keys(kKeys, "a block");
    std::string key;
    SourcePos keyAt;
    while (reader.NextKey(key, keyAt)) {
        const std::string keyPointer = PointerChild(at, key);
        switch (keys.Take(key, at, keyAt)) {
        case 0: {
            const InputValue type = InputValue::Read(reader);
            if (type.GetKind() != InputValue::Kind::Text || type.Text().empty()) Wrong(keyPointer, "a type name", type);
            block.type = type.Text();
            block.typePos = type.Pos();
            break;
        }
        case 1: {
            const InputValue list = InputValue::Read(reader);
            if (list.GetKind() != InputValue::Kind::Text) Wrong(keyPointer, "the name of a component list", list);
            block.componentList = list.Text();
            block.componentsPos = list.Pos();
            break;
        }
        case 2: block.sets = ReadSets(reader, keyPointer, "an object of property paths and values"); break;
        case 3: {
            const InputValue text = InputValue::Read(reader);
            if (text.GetKind() != InputValue::Kind::Text) Wrong(keyPointer, "a text", text);
            break;
        }
        case 4: {
            const InputValue ports = InputValue::Read(reader);
            if (ports.GetKind() != InputValue::Kind::Object) Wrong(keyPointer, "an object", ports);
            if (ports.Size() != 0)
                throw InputError(keyPointer, "not implemented: ports of blocks cannot be joined yet", ports.Pos());
            break;
        }
        case 5:
            block.links = ReadSets(reader, keyPointer, "an object of external references and the paths they are bound to");
            for (const SetEntry& l : block.links)
                if (l.value.GetKind() != InputValue::Kind::Text || l.value.Text().find('.') == std::string::npos)
                    Wrong(l.pointer, "a path BLOCK.PROPERTY", l.value);
            break;
        }
    }
    if (!keys.Seen(0)) throw InputError(at, "block " + block.name + " has no \"type\"", block.pos);
}

void ReadBlocks(JsonReader& reader, FlowsheetDocument& doc) {
    const SourcePos sectionAt = (reader.Next(), reader.Position());
    ReadNamed(
        reader, "/blocks", "an object of named blocks", "block",
        [](const std::string& name) {
            return ValidBlockName(name) ? std::string()
                                        : "block name \"" + VX_BriefText(name) + "\" may hold only letters, digits, '_' and '-'";
        },
        [&](const std::string& name, const std::string& at, SourcePos keyAt) {
            doc.blocks.push_back(BlockSpec{name, {}, {}, {}, at, keyAt, {}, {}, {}});
            ReadBlock(reader, doc.blocks.back());
        });
    if (doc.blocks.empty()) throw InputError("/blocks", "the flowsheet has no blocks", sectionAt);
}

// Blocks may name a component list the file defines after them.
void ResolveComponentLists(FlowsheetDocument& doc) {
    for (BlockSpec& block : doc.blocks) {
        if (block.componentList.empty()) continue;
        const ComponentListSpec* found = nullptr;
        for (const auto& l : doc.componentLists)
            if (VX_EqualCI(l.name.c_str(), block.componentList.c_str())) found = &l;
        if (found) {
            block.componentList = found->name;
            continue;
        }
        std::string known;
        for (const auto& l : doc.componentLists) known += (known.empty() ? "" : ", ") + l.name;
        throw InputError(PointerChild(block.pointer, "components"),
                         "block " + block.name + ": no component list \"" + VX_BriefText(block.componentList) + "\"" +
                             (known.empty() ? " (the file defines none)" : " (defined: " + known + ")"),
                         block.componentsPos);
    }
}

// "connections": a list of {"from": "BLOCK.PORT", "to": "BLOCK.PORT", "name": "..."}; the
// ends are checked against the blocks when the flowsheet is built.
void ReadConnections(JsonReader& reader, FlowsheetDocument& doc) {
    const InputValue list = InputValue::Read(reader);
    if (list.GetKind() != InputValue::Kind::List) Wrong("/connections", "a list of connections", list);
    if (list.IsNumberList()) Wrong("/connections/0", "an object with \"from\" and \"to\"", list.NumberItem(0));
    for (std::size_t k = 0; k < list.Items().size(); ++k) {
        const InputValue& item = list.Items()[k];
        ConnectionSpec c;
        c.pointer = PointerChild("/connections", k);
        c.pos = item.Pos();
        if (item.GetKind() != InputValue::Kind::Object) Wrong(c.pointer, "an object with \"from\" and \"to\"", item);
        for (const InputMember& m : item.Members()) {
            const std::string at = PointerChild(c.pointer, m.key);
            std::string* field = m.key == "from" ? &c.from : m.key == "to" ? &c.to : m.key == "name" ? &c.name : nullptr;
            if (!field)
                throw InputError(at, "unknown key \"" + VX_BriefText(m.key) + "\" in a connection (known keys: from, to, name)", m.keyPos);
            const bool end = field != &c.name;
            if (m.value.GetKind() != InputValue::Kind::Text || m.value.Text().empty())
                Wrong(at, end ? "a port as \"BLOCK.PORT\"" : "a connection name", m.value);
            *field = m.value.Text();
            if (field == &c.from) c.fromPos = m.value.Pos();
            if (field == &c.to) c.toPos = m.value.Pos();
        }
        if (c.from.empty() || c.to.empty())
            throw InputError(c.pointer, std::string("a connection needs \"") + (c.from.empty() ? "from" : "to") + "\"", c.pos);
        for (const bool to : {false, true}) {
            const std::string& end = to ? c.to : c.from;
            if (end.find('.') == std::string::npos)
                throw InputError(PointerChild(c.pointer, to ? "to" : "from"),
                                 "connection " + c.from + " -> " + c.to + ": end \"" + VX_BriefText(end) + "\" is not BLOCK.PORT",
                                 to ? c.toPos : c.fromPos);
        }
        doc.connections.push_back(std::move(c));
    }
}

FlowsheetDocument ReadDocument(JsonReader& reader) {
    if (reader.Next() != JsonReader::Token::Object)
        Wrong("", "an object with \"components\", \"globals\" and \"blocks\"", InputValue::Read(reader));
    reader.EnterObject();
    static constexpr const char* kKeys[] = {"version", "description", "components", "globals", "blocks", "connections"};
    KnownKeys keys(kKeys, "a flowsheet");
    FlowsheetDocument doc;
    std::string key;
    SourcePos keyAt;
    while (reader.NextKey(key, keyAt)) {
        const std::string pointer = PointerChild("", key);
        switch (keys.Take(key, "", keyAt)) {
        case 0: {
            const InputValue v = InputValue::Read(reader);
            if (v.GetKind() != InputValue::Kind::Integer || v.Number() != 1)
                throw InputError(pointer, "this program reads flowsheet files of version 1, not " + v.Brief(), v.Pos());
            break;
        }
        case 1: {
            const InputValue v = InputValue::Read(reader);
            if (v.GetKind() != InputValue::Kind::Text) Wrong(pointer, "a text", v);
            break;
        }
        case 2: ReadComponentLists(reader, doc); break;
        case 3: doc.globals = ReadSets(reader, pointer, "an object of global names and values"); break;
        case 4: ReadBlocks(reader, doc); break;
        case 5: ReadConnections(reader, doc); break;
        }
    }
    reader.Finish();
    if (!keys.Seen(4)) throw InputError("", "the flowsheet has no \"blocks\"");
    ResolveComponentLists(doc);
    return doc;
}

// The whole content of a file, or a refusal naming why it cannot be read.
std::string ReadFileText(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) throw InputError("", std::string("cannot read the file: ") + std::strerror(errno));
    if (S_ISDIR(info.st_mode)) throw InputError("", "is a directory, not a flowsheet file");
    // Devices such as /dev/zero would never end; pipes and regular files do.
    if (!S_ISREG(info.st_mode) && !S_ISFIFO(info.st_mode)) throw InputError("", "is not a regular file");
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) throw InputError("", std::string("cannot read the file: ") + std::strerror(errno));
    std::string text;
    if (S_ISREG(info.st_mode)) text.reserve(static_cast<std::size_t>(info.st_size));
    char buffer[1 << 16];
    for (;;) {
        const std::size_t n = std::fread(buffer, 1, sizeof buffer, file.get());
        text.append(buffer, n);
        if (n < sizeof buffer) break;
    }
    if (std::ferror(file.get())) throw InputError("", std::string("reading the file failed: ") + std::strerror(errno));
    return text;
}

}  // namespace

bool IsAttributeKey(std::string_view key) {
    return key == "value" || key == "spec" || key == "lower" || key == "upper" || key == "unit";
}

bool IsAttributeObject(const InputValue& value) {
    if (value.GetKind() != InputValue::Kind::Object || value.Size() == 0) return false;
    for (const InputMember& m : value.Members())
        if (!IsAttributeKey(m.key)) return false;
    return true;
}

SourcePos FlowsheetDocument::PositionOf(const std::string& pointer) const {
    for (const SetEntry& g : globals)
        if (g.pointer == pointer) return g.pos;
    for (const BlockSpec& b : blocks) {
        if (pointer.compare(0, b.pointer.size(), b.pointer) != 0) continue;
        if (pointer == b.pointer) return b.pos;
        if (pointer == PointerChild(b.pointer, "type")) return b.typePos;
        if (pointer == PointerChild(b.pointer, "components")) return b.componentsPos;
        for (const SetEntry& e : b.sets)
            if (e.pointer == pointer) return e.pos;
    }
    for (const ComponentListSpec& l : componentLists)
        if (l.pointer == pointer) return l.pos;
    for (const ConnectionSpec& c : connections) {
        if (pointer == c.pointer) return c.pos;
        if (pointer == PointerChild(c.pointer, "from")) return c.fromPos;
        if (pointer == PointerChild(c.pointer, "to")) return c.toPos;
    }
    return {};
}

FlowsheetDocument ReadFlowsheetText(std::string_view text, const ReadingLimits& limits) {
    JsonReader reader(text, limits);
    return ReadDocument(reader);
}

FlowsheetDocument ReadFlowsheetFile(const std::string& path, const ReadingLimits& limits) {
    return ReadFlowsheetText(ReadFileText(path), limits);
}

}  // namespace zx::flowsheet
