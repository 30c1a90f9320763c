#include "value_parsing.hpp"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "zorexp/set_value.hpp"
#include "zorexp/text.hpp"

namespace zorexp_cli {
namespace {

std::string_view Trim(std::string_view s) {
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
    return s;
}

bool ReadInteger(std::string_view s, int& out) {
    s = Trim(s);
    if (!s.empty() && s.front() == '+') s.remove_prefix(1);
    auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
    return !s.empty() && ec == std::errc() && ptr == s.data() + s.size();
}

bool ReadReal(std::string_view s, double& out) {
    const std::string text(Trim(s));
    if (text.empty()) return false;
    char* end = nullptr;
    out = std::strtod(text.c_str(), &end);
    return end == text.c_str() + text.size();
}

std::vector<std::string_view> SplitCommas(std::string_view s) {
    std::vector<std::string_view> parts;
    if (Trim(s).empty()) return parts;
    for (std::size_t start = 0;;) {
        const auto comma = s.find(',', start);
        parts.push_back(Trim(s.substr(start, comma == std::string_view::npos ? std::string_view::npos : comma - start)));
        if (comma == std::string_view::npos) return parts;
        start = comma + 1;
    }
}

// "1,3:5" (members and ranges); false when a member is not an integer or a range.
bool ReadIntegerSet(std::string_view s, VX_IntSetData& out) {
    for (std::string_view member : SplitCommas(s)) {
        const auto colon = member.find(':');
        int low = 0, high = 0;
        if (colon == std::string_view::npos) {
            if (!ReadInteger(member, low)) return false;
            out.Add(low);
        } else {
            if (!ReadInteger(member.substr(0, colon), low) || !ReadInteger(member.substr(colon + 1), high) || high < low)
                return false;
            out.AddRange(low, high);
        }
    }
    return true;
}

VX_Value Text(std::string_view text) { return VX_Value(std::string(text).c_str(), 0); }

}  // namespace

VX_Value ParseValue(const VX_VarParam& target, VX_Attr attr, std::string_view text) {
    if (attr == VX_ATTR_SPEC) {
        const std::int32_t spec = VX_SpecFromText(std::string(Trim(text)).c_str());
        return spec ? VX_Value(static_cast<VX_SpecType>(spec), VX_CTX_USER, 0, 0) : Text(text);
    }
    int i = 0;
    double x = 0.0;
    switch (target.GetKind()) {
    case VX_VarParam::RealVariable:
    case VX_VarParam::RealParameter:
        return ReadReal(text, x) ? VX_Value(x, 0) : Text(text);
    case VX_VarParam::IntegerParameter:
        if (ReadInteger(text, i)) return VX_Value(i, 0);
        return ReadReal(text, x) ? VX_Value(x, 0) : Text(text);
    case VX_VarParam::LogicalParameter: {
        const std::string t(Trim(text));
        if (VX_EqualCI(t.c_str(), "true") || t == "1") return VX_Value(true, 0);
        if (VX_EqualCI(t.c_str(), "false") || t == "0") return VX_Value(false, 0);
        return Text(text);
    }
    case VX_VarParam::StringParameter:
        return Text(text);
    case VX_VarParam::IntegerSet: {
        auto set = std::make_shared<VX_IntSetData>();
        return ReadIntegerSet(text, *set) ? VX_Value(VX_IntSetValue(set), 0) : Text(text);
    }
    case VX_VarParam::StringSet: {
        std::vector<std::string> members;
        for (std::string_view m : SplitCommas(text)) members.emplace_back(m);
        return VX_Value(VX_StrSetValue(std::move(members)), 0);
    }
    }
    return Text(text);
}

}  // namespace zorexp_cli
