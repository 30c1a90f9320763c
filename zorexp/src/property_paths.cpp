#include "zorexp/property_paths.hpp"

#include <charconv>
#include <climits>
#include <vector>

#include "zorexp/arrays.hpp"
#include "zorexp/references.hpp"
#include "zorexp/text.hpp"

namespace {

std::string_view Trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    if (s.size() >= 2 && (s.front() == '"' || s.front() == '\'') && s.back() == s.front()) s = s.substr(1, s.size() - 2);
    return s;
}

// Splits at separator outside parentheses.
std::vector<std::string_view> Split(std::string_view s, char separator) {
    std::vector<std::string_view> parts;
    int depth = 0;
    std::size_t start = 0;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '(') ++depth;
        else if (s[i] == ')') --depth;
        else if (s[i] == separator && depth == 0) {
            parts.push_back(s.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(s.substr(start));
    return parts;
}

bool AsInteger(std::string_view s, long& out) {
    const char* end = s.data() + s.size();
    auto [ptr, ec] = std::from_chars(s.data(), end, out);
    return ec == std::errc() && ptr == end;
}

bool SameIndex(std::string_view a, std::string_view b) {
    a = Trim(a);
    b = Trim(b);
    long x = 0, y = 0;
    if (AsInteger(a, x) && AsInteger(b, y)) return x == y;
    return a.size() == b.size() && SUValue::CompareCI(std::string(a).c_str(), std::string(b).c_str()) == 0;
}

// Follows global and virtual references to the object they stand for.
VX_Type* Dereference(VX_Type* t) {
    if (auto* g = dynamic_cast<VX_GlobalBase*>(t)) return g->Target() ? g->Target() : t;
    if (auto* v = dynamic_cast<VX_VirtualBase*>(t)) return v->Target() ? v->Target() : t;
    if (auto* e = dynamic_cast<VX_ExternalBase*>(t)) return e->Target() ? e->Target() : t;
    return t;
}

std::string IndexList(const VX_Matrix& array) {
    const int n = array.Size();
    if (n == 0) return "it has no elements yet";
    std::string out = "its indices are ";
    auto add = [&](int k) { out += (out.back() == ' ' ? "" : ", ") + array.IndexText(k); };
    if (n <= 8) {
        for (int k = 0; k < n; ++k) add(k);
    } else {
        for (int k = 0; k < 3; ++k) add(k);
        out += ", ...";
        add(n - 1);
    }
    return out;
}

// The element of array named by one index, looked up directly (no walk over the elements):
// null when the array is not indexed by one integer or text, or has no such element.
VX_Type* FindDirect(VX_Matrix& array, std::string_view index) {
    index = Trim(index);
    if (auto* ints = dynamic_cast<VX_BASE_I*>(&array)) {
        long i = 0;
        return AsInteger(index, i) && i >= INT_MIN && i <= INT_MAX ? ints->Find(static_cast<int>(i)) : nullptr;
    }
    if (auto* texts = dynamic_cast<VX_BASE_S*>(&array)) {
        const VX_StrSetData& set = texts->IndexSet();
        // Members that themselves hold commas are multi-part indices: those take the walk.
        if (set.Size() > 0 && set.At(0).find(',') == std::string::npos) return texts->Find(std::string(index).c_str());
    }
    return nullptr;
}

// The element of array named by indices (several when the array has several dimensions, or
// when its elements are arrays themselves).
VX_Type* FindElement(VX_Matrix& array, const std::vector<std::string_view>& indices, std::size_t first) {
    if (VX_Type* direct = FindDirect(array, indices[first])) {
        if (first + 1 == indices.size()) return direct;
        auto* inner = dynamic_cast<VX_Matrix*>(Dereference(direct));
        return inner ? FindElement(*inner, indices, first + 1) : nullptr;
    }
    for (int k = 0; k < array.Size(); ++k) {
        const std::string text = array.IndexText(k);
        const auto parts = Split(text, ',');
        if (parts.size() > indices.size() - first) continue;
        bool match = true;
        for (std::size_t j = 0; match && j < parts.size(); ++j) match = SameIndex(parts[j], indices[first + j]);
        if (!match) continue;
        VX_Type* element = array.At(k);
        if (!element) return nullptr;
        if (first + parts.size() == indices.size()) return element;
        auto* inner = dynamic_cast<VX_Matrix*>(Dereference(element));
        return inner ? FindElement(*inner, indices, first + parts.size()) : nullptr;
    }
    return nullptr;
}

}  // namespace

VX_PathResolution VX_ResolvePath(VX_Type& root, std::string_view path) {
    VX_Type* current = &root;
    std::string walked;
    if (Trim(path).empty()) return {nullptr, "empty property path"};
    for (std::string_view segment : Split(path, '.')) {
        segment = Trim(segment);
        std::string_view name = segment, indexText;
        const auto open = segment.find('(');
        if (open != std::string_view::npos) {
            if (segment.back() != ')') return {nullptr, "malformed property path \"" + std::string(path) + "\""};
            name = Trim(segment.substr(0, open));
            indexText = segment.substr(open + 1, segment.size() - open - 2);
        }
        if (name.empty()) return {nullptr, "malformed property path \"" + std::string(path) + "\""};
        const std::string owner = walked.empty() ? root.TypeName() : walked;
        VX_Type* found = current->FindProperty(std::string(name).c_str());
        if (!walked.empty()) walked += '.';
        walked.append(name);
        if (!found) return {nullptr, "no property " + std::string(name) + " in " + owner};
        current = Dereference(found);
        if (open == std::string_view::npos) continue;
        auto* array = dynamic_cast<VX_Matrix*>(current);
        if (!array) return {nullptr, walked + " is not an array"};
        const auto indices = Split(indexText, ',');
        VX_Type* element = FindElement(*array, indices, 0);
        if (!element) return {nullptr, "no element " + walked + "(" + std::string(indexText) + "): " + IndexList(*array)};
        walked += '(';
        walked.append(indexText);
        walked += ')';
        current = Dereference(element);
    }
    return {current, {}};
}
