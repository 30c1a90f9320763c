#pragma once
// A value of a flowsheet file as read: what it is (a number, an integer, a text, a logical, a
// list or an object), where it stands, and its content. Lists whose items are all numbers keep
// them side by side in one vector, so that an array's values can be applied in one pass.
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "flowsheet/json_reader.hpp"
#include "flowsheet/source_position.hpp"

namespace zx::flowsheet {

struct InputMember;

class InputValue {
public:
    enum class Kind : unsigned char { Null, Logical, Integer, Real, Text, List, Object };

    InputValue();
    InputValue(InputValue&&) noexcept;
    InputValue& operator=(InputValue&&) noexcept;
    // Deep copies, for documents built or varied in code; the reader only moves.
    InputValue(const InputValue& other);
    InputValue& operator=(const InputValue& other);
    ~InputValue();

    Kind GetKind() const { return m_kind; }
    SourcePos Pos() const { return m_pos; }

    bool IsNumber() const { return m_kind == Kind::Integer || m_kind == Kind::Real; }
    // An integer literal that fits 32 bits (the runtime's integers).
    bool IsInt32() const;
    double Number() const { return m_number; }   // Integer, Real; Logical as 0 or 1
    bool Logical() const { return m_number != 0.0; }
    const std::string& Text() const { return m_text; }   // Text (and, for integers too wide for a
                                                         // double to hold exactly, the literal)

    // Items of a list, members of an object (0 for anything else).
    std::size_t Size() const;

    // --- lists. When every item is a number they are kept in Numbers() (with their positions)
    // and Items() is empty.
    bool IsNumberList() const;
    const std::vector<double>& Numbers() const;
    const std::vector<SourcePos>& NumberPositions() const;
    // Whether number item k was written as an integer ("2", not "2.0" or "2e0").
    bool IsIntegerItem(std::size_t k) const;
    const std::vector<InputValue>& Items() const;
    // Number item k of a number list as a value of its own.
    InputValue NumberItem(std::size_t k) const;
    // Calls visit(item, k) for each item of a list in order until it returns false; false
    // when it did.
    template <class Visit>
    bool ForEachItem(Visit&& visit) const;

    // --- objects, members in file order
    const std::vector<InputMember>& Members() const;
    const InputValue* Find(std::string_view key) const;

    // A short rendering for messages: 2.5, "hot", [1, 2, ...], {...}.
    std::string Brief() const;
    // "a real number", "a text", "an object", ...
    const char* KindText() const;

    // Reads the next value from reader; objects refuse a key given twice.
    static InputValue Read(JsonReader& reader);
    // The one value a whole JSON text holds (for values made in code, such as a document built
    // by a program rather than read from a file).
    static InputValue Parse(std::string_view text);
    static InputValue MakeNumber(double value, bool integer, SourcePos pos);
    // A list of real numbers made in code (an array's values handed over by a program), without
    // writing them as text first.
    static InputValue MakeNumberList(std::vector<double> numbers);

private:
    struct ListParts;
    ListParts& List();
    void AppendBrief(std::string& out) const;
    void ReadList(JsonReader& reader);
    void ReadObject(JsonReader& reader);

    Kind m_kind = Kind::Null;
    SourcePos m_pos;
    double m_number = 0.0;
    std::string m_text;
    std::unique_ptr<ListParts> m_list;    // lists
    std::vector<InputMember> m_members;   // objects
};

struct InputMember {
    std::string key;
    SourcePos keyPos;
    InputValue value;
};

template <class Visit>
bool InputValue::ForEachItem(Visit&& visit) const {
    const std::size_t n = Size();
    if (IsNumberList()) {
        for (std::size_t k = 0; k < n; ++k)
            if (!visit(NumberItem(k), k)) return false;
        return true;
    }
    const std::vector<InputValue>& items = Items();
    for (std::size_t k = 0; k < n; ++k)
        if (!visit(items[k], k)) return false;
    return true;
}

}  // namespace zx::flowsheet
