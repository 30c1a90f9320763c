#include "flowsheet/input_value.hpp"

#include <charconv>
#include <climits>
#include <cmath>
#include <unordered_map>

#include "zorexp/text.hpp"

namespace zx::flowsheet {

struct InputValue::ListParts {
    std::vector<double> numbers;
    std::vector<SourcePos> numberPos;
    std::vector<bool> integers;   // per number: written as an integer
    std::vector<InputValue> items;
};

namespace {

const std::vector<double> kNoNumbers;
const std::vector<SourcePos> kNoPositions;
const std::vector<InputValue> kNoItems;

// Up to this many members, a repeated key is found by comparing pairs; beyond, by hashing.
constexpr std::size_t kPairwiseKeys = 16;

// Integers beyond this are not all held exactly by a double: such literals keep their text.
constexpr double kExactIntegers = 9007199254740992.0;   // 2^53

bool KeepsLiteral(const JsonReader::Number& n) { return n.integer && std::fabs(n.value) > kExactIntegers; }

std::string NumberText(double v, bool integer) {
    char buf[32];
    const auto r = integer ? std::to_chars(buf, buf + sizeof buf, static_cast<long long>(v))
                           : std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, r.ptr);
}

[[noreturn]] void RepeatedKey(const InputMember& first, const InputMember& again) {
    JsonReader::Fail(again.keyPos, "key \"" + VX_BriefText(again.key) + "\" is given twice in the same object (first at " +
                                       first.keyPos.Text() + ")");
}

void RefuseRepeatedKeys(const std::vector<InputMember>& members) {
    if (members.size() <= kPairwiseKeys) {
        for (std::size_t i = 1; i < members.size(); ++i)
            for (std::size_t j = 0; j < i; ++j)
                if (members[i].key == members[j].key) RepeatedKey(members[j], members[i]);
        return;
    }
    std::unordered_map<std::string_view, std::size_t> seen;
    seen.reserve(members.size());
    for (std::size_t i = 0; i < members.size(); ++i) {
        auto [it, added] = seen.emplace(members[i].key, i);
        if (!added) RepeatedKey(members[it->second], members[i]);
    }
}

}  // namespace

InputValue::InputValue() = default;
InputValue::InputValue(InputValue&&) noexcept = default;
InputValue& InputValue::operator=(InputValue&&) noexcept = default;

InputValue::InputValue(const InputValue& other)
    : m_kind(other.m_kind), m_pos(other.m_pos), m_number(other.m_number), m_text(other.m_text),
      m_list(other.m_list ? std::make_unique<ListParts>(*other.m_list) : nullptr), m_members(other.m_members) {}

InputValue& InputValue::operator=(const InputValue& other) {
    if (this != &other) *this = InputValue(other);
    return *this;
}
InputValue::~InputValue() = default;

InputValue::ListParts& InputValue::List() {
    if (!m_list) m_list = std::make_unique<ListParts>();
    return *m_list;
}

bool InputValue::IsInt32() const {
    return m_kind == Kind::Integer && m_number >= static_cast<double>(INT_MIN) && m_number <= static_cast<double>(INT_MAX);
}

std::size_t InputValue::Size() const {
    if (m_kind == Kind::Object) return m_members.size();
    if (!m_list) return 0;
    return m_list->items.empty() ? m_list->numbers.size() : m_list->items.size();
}

bool InputValue::IsNumberList() const { return m_list && !m_list->numbers.empty(); }
const std::vector<double>& InputValue::Numbers() const { return m_list ? m_list->numbers : kNoNumbers; }
const std::vector<SourcePos>& InputValue::NumberPositions() const { return m_list ? m_list->numberPos : kNoPositions; }
bool InputValue::IsIntegerItem(std::size_t k) const { return m_list->integers[k]; }
const std::vector<InputValue>& InputValue::Items() const { return m_list ? m_list->items : kNoItems; }
const std::vector<InputMember>& InputValue::Members() const { return m_members; }

InputValue InputValue::NumberItem(std::size_t k) const {
    return MakeNumber(m_list->numbers[k], m_list->integers[k], m_list->numberPos[k]);
}

InputValue InputValue::MakeNumberList(std::vector<double> numbers) {
    InputValue v;
    v.m_kind = Kind::List;
    ListParts& p = v.List();
    p.numberPos.assign(numbers.size(), SourcePos{});
    p.integers.assign(numbers.size(), false);
    p.numbers = std::move(numbers);
    return v;
}

const InputValue* InputValue::Find(std::string_view key) const {
    for (const InputMember& m : Members())
        if (m.key == key) return &m.value;
    return nullptr;
}

InputValue InputValue::MakeNumber(double value, bool integer, SourcePos pos) {
    InputValue v;
    v.m_kind = integer ? Kind::Integer : Kind::Real;
    v.m_number = value;
    v.m_pos = pos;
    return v;
}

const char* InputValue::KindText() const {
    switch (m_kind) {
    case Kind::Null: return "null";
    case Kind::Logical: return "a logical";
    case Kind::Integer: return "an integer";
    case Kind::Real: return "a real number";
    case Kind::Text: return "a text";
    case Kind::List: return "a list";
    case Kind::Object: return "an object";
    }
    return "a value";
}

std::string InputValue::Brief() const {
    std::string out;
    AppendBrief(out);
    return out;
}

void InputValue::AppendBrief(std::string& out) const {
    // Lists and objects show their first items, and nothing once the text is long enough.
    constexpr std::size_t kItems = 4, kLength = 60;
    if (out.size() >= kLength) {
        out += "...";
        return;
    }
    switch (m_kind) {
    case Kind::Null: out += "null"; return;
    case Kind::Logical: out += Logical() ? "true" : "false"; return;
    case Kind::Integer:
    case Kind::Real: out += m_text.empty() ? NumberText(m_number, m_kind == Kind::Integer) : VX_BriefText(m_text, kLength); return;
    case Kind::Text: out += "\"" + VX_BriefText(m_text, kLength) + "\""; return;
    case Kind::List:
        out += '[';
        for (std::size_t k = 0; k < Size() && k < kItems; ++k) {
            if (k) out += ", ";
            if (IsNumberList()) NumberItem(k).AppendBrief(out);
            else m_list->items[k].AppendBrief(out);
        }
        out += Size() > kItems ? ", ...]" : "]";
        return;
    case Kind::Object:
        out += '{';
        for (std::size_t k = 0; k < Size() && k < kItems; ++k) {
            const InputMember& m = m_members[k];
            out += (k ? ", \"" : "\"") + VX_BriefText(m.key, 30) + "\": ";
            m.value.AppendBrief(out);
        }
        out += Size() > kItems ? ", ...}" : "}";
        return;
    }
}

InputValue InputValue::Parse(std::string_view text) {
    JsonReader reader(text);
    InputValue v = Read(reader);
    reader.Finish();
    return v;
}

InputValue InputValue::Read(JsonReader& reader) {
    InputValue v;
    const JsonReader::Token token = reader.Next();
    v.m_pos = reader.Position();
    switch (token) {
    case JsonReader::Token::Object: v.ReadObject(reader); break;
    case JsonReader::Token::List: v.ReadList(reader); break;
    case JsonReader::Token::Text:
        v.m_kind = Kind::Text;
        reader.ReadText(v.m_text);
        break;
    case JsonReader::Token::Number: {
        const JsonReader::Number n = reader.ReadNumber();
        v.m_kind = n.integer ? Kind::Integer : Kind::Real;
        v.m_number = n.value;
        if (KeepsLiteral(n)) v.m_text = n.literal;
        break;
    }
    case JsonReader::Token::Logical:
        v.m_kind = Kind::Logical;
        v.m_number = reader.ReadLogical() ? 1.0 : 0.0;
        break;
    case JsonReader::Token::Null:
        reader.ReadNull();
        break;
    }
    return v;
}

void InputValue::ReadList(JsonReader& reader) {
    m_kind = Kind::List;
    ListParts& p = List();
    reader.EnterList();
    bool numbers = true;   // every item so far is a number held in p.numbers
    // A list of other things: the numbers so far become items like any other.
    auto toItems = [&] {
        numbers = false;
        p.items.reserve(p.numbers.size() + 1);
        for (std::size_t k = 0; k < p.numbers.size(); ++k)
            p.items.push_back(MakeNumber(p.numbers[k], p.integers[k], p.numberPos[k]));
        p.numbers = {};
        p.numberPos = {};
        p.integers = {};
    };
    while (reader.NextItem()) {
        if (numbers && reader.Next() == JsonReader::Token::Number) {
            const SourcePos at = reader.Position();
            const JsonReader::Number n = reader.ReadNumber();
            if (!KeepsLiteral(n)) {
                p.numbers.push_back(n.value);
                p.integers.push_back(n.integer);
                p.numberPos.push_back(at);
                continue;
            }
            toItems();
            InputValue item = MakeNumber(n.value, true, at);
            item.m_text = n.literal;
            p.items.push_back(std::move(item));
            continue;
        }
        if (numbers) toItems();
        p.items.push_back(Read(reader));
    }
}

void InputValue::ReadObject(JsonReader& reader) {
    m_kind = Kind::Object;
    reader.EnterObject();
    std::string key;
    SourcePos keyAt;
    while (reader.NextKey(key, keyAt)) m_members.push_back(InputMember{key, keyAt, Read(reader)});
    RefuseRepeatedKeys(m_members);
}

}  // namespace zx::flowsheet
