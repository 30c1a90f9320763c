#include "flowsheet/json_reading.hpp"

#include <set>
#include <vector>

#include "flowsheet/input_error.hpp"

namespace zx::flowsheet {
namespace {

// Line and column (both from 1) of the byte at offset (counted from 0).
std::string LineColumn(const std::string& text, std::size_t offset) {
    std::size_t line = 1, column = 1;
    for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
    return std::to_string(line) + ":" + std::to_string(column);
}

// The reader's message without its own prefix and position ("[json.exception...] parse error
// at line 3, column 5: ").
std::string SyntaxMessage(const nlohmann::json::parse_error& e) {
    std::string m = e.what();
    const auto colon = m.find(": ");
    if (colon != std::string::npos && m.find("parse error") < colon) m.erase(0, colon + 2);
    return m;
}

// Tracks where the parser is, as a JSON pointer, and the keys seen in each open object.
class KeyTracker {
public:
    bool Event(nlohmann::json::parse_event_t event, const Json& parsed) {
        using E = nlohmann::json::parse_event_t;
        switch (event) {
        case E::object_start:
        case E::array_start:
            CountArrayItem();
            m_frames.push_back(Frame{event == E::object_start, {}, {}, -1});
            break;
        case E::object_end:
        case E::array_end:
            if (!m_frames.empty()) m_frames.pop_back();
            break;
        case E::key: {
            Frame& f = m_frames.back();
            f.key = parsed.get<std::string>();
            if (!f.keys.insert(f.key).second && m_duplicate.empty()) m_duplicate = Pointer();
            break;
        }
        case E::value:
            CountArrayItem();
            break;
        }
        return true;
    }
    const std::string& Duplicate() const { return m_duplicate; }

private:
    struct Frame {
        bool object;
        std::set<std::string> keys;
        std::string key;
        long index;
    };
    void CountArrayItem() {
        if (!m_frames.empty() && !m_frames.back().object) ++m_frames.back().index;
    }
    std::string Pointer() const {
        std::string p;
        for (const Frame& f : m_frames)
            p = f.object ? PointerChild(p, f.key) : PointerChild(p, static_cast<std::size_t>(f.index));
        return p;
    }
    std::vector<Frame> m_frames;
    std::string m_duplicate;
};

}  // namespace

Json ParseJsonText(const std::string& text) {
    KeyTracker tracker;
    Json doc;
    try {
        doc = Json::parse(text, [&](int, nlohmann::json::parse_event_t event, Json& parsed) {
            return tracker.Event(event, parsed);
        });
    } catch (const nlohmann::json::parse_error& e) {
        const std::size_t offset = e.byte > 0 ? e.byte - 1 : 0;
        throw InputError(LineColumn(text, offset), "syntax error: " + SyntaxMessage(e));
    }
    if (!tracker.Duplicate().empty())
        throw InputError(tracker.Duplicate(), "key given twice in the same object");
    return doc;
}

std::string PointerChild(const std::string& pointer, const std::string& key) {
    std::string out = pointer + "/";
    for (char c : key) {
        if (c == '~') out += "~0";
        else if (c == '/') out += "~1";
        else out += c;
    }
    return out;
}

std::string PointerChild(const std::string& pointer, std::size_t index) {
    return pointer + "/" + std::to_string(index);
}

std::string JsonBrief(const Json& value) {
    std::string s = value.dump();
    if (s.size() > 60) s = s.substr(0, 57) + "...";
    return s;
}

}  // namespace zx::flowsheet
