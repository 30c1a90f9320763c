#pragma once
// Set values: ordered integer sets (kept as sorted ranges, so 0..N costs O(1) memory)
// and ordered string sets (kept in the order given, looked up without regard to case).
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

class VX_IntSetData {
public:
    VX_IntSetData() = default;
    VX_IntSetData(int low, int high);            // low..high inclusive; empty when high < low
    void Add(int value);                         // keeps ranges sorted and merged
    void AddRange(int low, int high);
    std::size_t Size() const { return m_size; }
    bool Empty() const { return m_size == 0; }
    bool Contains(int value) const;
    int At(std::size_t position) const;          // element at a position in set order
    std::optional<std::size_t> PositionOf(int value) const;
    const std::vector<std::pair<int, int>>& Ranges() const { return m_ranges; }
    bool IsSingleRange() const { return m_ranges.size() == 1; }
    std::string Text() const;                    // stored form, e.g. 1"3:7" (see ParseStored)
    bool operator==(const VX_IntSetData& o) const { return m_ranges == o.m_ranges; }

private:
    std::vector<std::pair<int, int>> m_ranges;   // disjoint, ascending, not adjacent
    std::vector<std::size_t> m_startPos;         // position of each range's first element
    std::size_t m_size = 0;
    void Reindex();
};

class VX_StrSetData {
public:
    VX_StrSetData() = default;
    explicit VX_StrSetData(std::vector<std::string> members);
    bool Add(const std::string& member);         // false when already present (ignoring case)
    std::size_t Size() const { return m_members.size(); }
    bool Empty() const { return m_members.empty(); }
    const std::string& At(std::size_t position) const { return m_members[position]; }
    std::optional<std::size_t> PositionOf(const std::string& member) const;  // ignoring case
    bool Contains(const std::string& member) const { return PositionOf(member).has_value(); }
    const std::vector<std::string>& Members() const { return m_members; }
    std::string Text() const;                    // stored form: each member closed by a double quote
    bool operator==(const VX_StrSetData& o) const { return m_members == o.m_members; }

private:
    std::vector<std::string> m_members;
    std::unordered_map<std::string, std::size_t> m_index;  // lowered member -> position
};

// Stored set grammar. A stored set is a sequence of members, each closed by a double quote (").
//  - String set: each member is taken literally (it may be empty); order is kept.
//  - Integer set: a member is an integer "n", a range "a:b", or ":b", which extends the member
//    before it to a range ending at b (so 1":3" is 1, 2, 3). Whitespace around numbers is ignored.
// Parsing throws std::invalid_argument naming the offending member.
VX_IntSetData VX_ParseIntSet(const std::string& stored);
VX_StrSetData VX_ParseStrSet(const std::string& stored);

// Set values as the generated code builds them.
class VX_IntSetValue {
public:
    VX_IntSetValue() : m_data(std::make_shared<VX_IntSetData>()) {}
    VX_IntSetValue(int low, int high) : m_data(std::make_shared<VX_IntSetData>(low, high)) {}
    explicit VX_IntSetValue(const char* stored);
    explicit VX_IntSetValue(std::shared_ptr<const VX_IntSetData> data) : m_data(std::move(data)) {}
    const VX_IntSetData& Data() const { return *m_data; }
    const std::shared_ptr<const VX_IntSetData>& Shared() const { return m_data; }

private:
    std::shared_ptr<const VX_IntSetData> m_data;
};

class VX_StrSetValue {
public:
    VX_StrSetValue() : m_data(std::make_shared<VX_StrSetData>()) {}
    explicit VX_StrSetValue(const char* stored);
    explicit VX_StrSetValue(std::vector<std::string> members)
        : m_data(std::make_shared<VX_StrSetData>(std::move(members))) {}
    explicit VX_StrSetValue(std::shared_ptr<const VX_StrSetData> data) : m_data(std::move(data)) {}
    const VX_StrSetData& Data() const { return *m_data; }
    const std::shared_ptr<const VX_StrSetData>& Shared() const { return m_data; }

private:
    std::shared_ptr<const VX_StrSetData> m_data;
};

// The set product A * B: the members of A that B holds too, in A's order (texts compared
// without regard to case). A component-list option that names the components carrying some
// data, taken * the list's components, gives the components of this list that carry it.
VX_StrSetValue operator*(const VX_StrSetValue& a, const VX_StrSetValue& b);
VX_IntSetValue operator*(const VX_IntSetValue& a, const VX_IntSetValue& b);
