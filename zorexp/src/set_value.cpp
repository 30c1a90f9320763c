#include "zorexp/set_value.hpp"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace {
std::string Lowered(const std::string& s) {
    std::string out(s);
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

// Splits a stored set into its members: each member ends at a double quote. Text after the
// last quote is a member too (a set written without its closing quote).
std::vector<std::string> Members(const std::string& stored) {
    std::vector<std::string> out;
    std::string cur;
    for (char c : stored) {
        if (c == '"') { out.push_back(cur); cur.clear(); }
        else cur.push_back(c);
    }
    if (!cur.empty()) out.push_back(cur);
    return out;
}

int ParseInt(const std::string& text, const std::string& member) {
    std::size_t used = 0;
    long v = 0;
    try {
        v = std::stol(text, &used);
    } catch (const std::exception&) {
        throw std::invalid_argument("integer set member \"" + member + "\" is not an integer or range");
    }
    while (used < text.size() && std::isspace(static_cast<unsigned char>(text[used]))) ++used;
    if (used != text.size())
        throw std::invalid_argument("integer set member \"" + member + "\" is not an integer or range");
    return static_cast<int>(v);
}
}  // namespace

VX_IntSetData::VX_IntSetData(int low, int high) {
    if (high >= low) m_ranges.emplace_back(low, high);
    Reindex();
}

void VX_IntSetData::Add(int value) { AddRange(value, value); }

void VX_IntSetData::AddRange(int low, int high) {
    if (high < low) return;
    m_ranges.emplace_back(low, high);
    std::sort(m_ranges.begin(), m_ranges.end());
    std::vector<std::pair<int, int>> merged;
    for (const auto& r : m_ranges) {
        if (!merged.empty() && static_cast<long>(r.first) <= static_cast<long>(merged.back().second) + 1)
            merged.back().second = std::max(merged.back().second, r.second);
        else
            merged.push_back(r);
    }
    m_ranges.swap(merged);
    Reindex();
}

void VX_IntSetData::Reindex() {
    m_startPos.clear();
    m_size = 0;
    for (const auto& r : m_ranges) {
        m_startPos.push_back(m_size);
        m_size += static_cast<std::size_t>(static_cast<long>(r.second) - r.first + 1);
    }
}

bool VX_IntSetData::Contains(int value) const { return PositionOf(value).has_value(); }

std::optional<std::size_t> VX_IntSetData::PositionOf(int value) const {
    auto it = std::upper_bound(m_ranges.begin(), m_ranges.end(), value,
                               [](int v, const std::pair<int, int>& r) { return v < r.first; });
    if (it == m_ranges.begin()) return std::nullopt;
    --it;
    if (value > it->second) return std::nullopt;
    const auto k = static_cast<std::size_t>(it - m_ranges.begin());
    return m_startPos[k] + static_cast<std::size_t>(value - it->first);
}

int VX_IntSetData::At(std::size_t position) const {
    auto it = std::upper_bound(m_startPos.begin(), m_startPos.end(), position);
    const auto k = static_cast<std::size_t>(it - m_startPos.begin()) - 1;
    return m_ranges[k].first + static_cast<int>(position - m_startPos[k]);
}

std::string VX_IntSetData::Text() const {
    std::string out;
    for (const auto& r : m_ranges) {
        out += std::to_string(r.first) + '"';
        if (r.second != r.first) out += ':' + std::to_string(r.second) + '"';
    }
    return out;
}

VX_StrSetData::VX_StrSetData(std::vector<std::string> members) {
    for (auto& m : members) Add(m);
}

bool VX_StrSetData::Add(const std::string& member) {
    auto key = Lowered(member);
    if (m_index.count(key)) return false;
    m_index.emplace(std::move(key), m_members.size());
    m_members.push_back(member);
    return true;
}

std::optional<std::size_t> VX_StrSetData::PositionOf(const std::string& member) const {
    auto it = m_index.find(Lowered(member));
    if (it == m_index.end()) return std::nullopt;
    return it->second;
}

std::string VX_StrSetData::Text() const {
    std::string out;
    for (const auto& m : m_members) out += m + '"';
    return out;
}

VX_IntSetData VX_ParseIntSet(const std::string& stored) {
    VX_IntSetData set;
    bool havePrev = false;
    int prev = 0;
    for (const auto& member : Members(stored)) {
        std::string m = member;
        m.erase(0, m.find_first_not_of(" \t"));
        if (m.empty()) throw std::invalid_argument("integer set has an empty member");
        const auto colon = m.find(':');
        if (colon == 0) {
            if (!havePrev) throw std::invalid_argument("integer set member \"" + member + "\" continues no member");
            const int high = ParseInt(m.substr(1), member);
            if (high < prev) throw std::invalid_argument("integer set range \"" + member + "\" ends below its start");
            set.AddRange(prev, high);
            havePrev = false;
        } else if (colon != std::string::npos) {
            const int low = ParseInt(m.substr(0, colon), member);
            const int high = ParseInt(m.substr(colon + 1), member);
            if (high < low) throw std::invalid_argument("integer set range \"" + member + "\" ends below its start");
            set.AddRange(low, high);
            havePrev = false;
        } else {
            prev = ParseInt(m, member);
            set.Add(prev);
            havePrev = true;
        }
    }
    return set;
}

VX_StrSetData VX_ParseStrSet(const std::string& stored) { return VX_StrSetData(Members(stored)); }

VX_IntSetValue::VX_IntSetValue(const char* stored)
    : m_data(std::make_shared<VX_IntSetData>(VX_ParseIntSet(stored ? stored : ""))) {}

VX_StrSetValue::VX_StrSetValue(const char* stored)
    : m_data(std::make_shared<VX_StrSetData>(VX_ParseStrSet(stored ? stored : ""))) {}

VX_StrSetValue operator*(const VX_StrSetValue& a, const VX_StrSetValue& b) {
    std::vector<std::string> common;
    for (const std::string& m : a.Data().Members())
        if (b.Data().Contains(m)) common.push_back(m);
    return VX_StrSetValue(std::move(common));
}

VX_IntSetValue operator*(const VX_IntSetValue& a, const VX_IntSetValue& b) {
    // Range by range: each overlap of a range of A with a range of B is kept whole.
    auto common = std::make_shared<VX_IntSetData>();
    for (const auto& [alow, ahigh] : a.Data().Ranges())
        for (const auto& [blow, bhigh] : b.Data().Ranges())
            if (std::max(alow, blow) <= std::min(ahigh, bhigh)) common->AddRange(std::max(alow, blow), std::min(ahigh, bhigh));
    return VX_IntSetValue(std::shared_ptr<const VX_IntSetData>(std::move(common)));
}
