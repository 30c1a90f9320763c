#include "value_parsing.hpp"

#include <cctype>
#include <charconv>
#include <cmath>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "zorexp/set_value.hpp"
#include "zorexp/text.hpp"
#include "zorexp/units.hpp"

namespace zorexp_cli {
namespace {

std::string_view Trim(std::string_view s) {
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
    while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
    return s;
}

constexpr const char* kIntegerRange = "outside the range of integers (-2147483648 to 2147483647)";

// A number of type T: an integer of 32 bits, or a real number in decimal or exponent form
// ("2.5", "-1e-3"; "inf" and "nan" too: the assignment says what it thinks of those). Text of
// the right form beyond T's range sets *problem.
template <class T>
bool ReadNumber(std::string_view s, T& out, std::string* problem) {
    s = Trim(s);
    if (!s.empty() && s.front() == '+') s.remove_prefix(1);
    auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
    const bool whole = !s.empty() && ptr == s.data() + s.size();
    if (whole && ec == std::errc::result_out_of_range && problem)
        *problem = std::is_integral_v<T> ? "integer " + VX_BriefText(s) + " is " + kIntegerRange
                                         : "number " + VX_BriefText(s) + " cannot be held as a real number (about 4.9e-324 to 1.8e308)";
    return whole && ec == std::errc();
}
bool ReadInteger(std::string_view s, int& out, std::string* problem) { return ReadNumber(s, out, problem); }
bool ReadReal(std::string_view s, double& out, std::string* problem) { return ReadNumber(s, out, problem); }

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
bool ReadIntegerSet(std::string_view s, VX_IntSetData& out, std::string* problem) {
    for (std::string_view member : SplitCommas(s)) {
        const auto colon = member.find(':');
        int low = 0, high = 0;
        if (colon == std::string_view::npos) {
            if (!ReadInteger(member, low, problem)) return false;
            out.Add(low);
        } else {
            if (!ReadInteger(member.substr(0, colon), low, problem) || !ReadInteger(member.substr(colon + 1), high, problem) ||
                high < low)
                return false;
            out.AddRange(low, high);
        }
    }
    return true;
}

VX_Value Text(std::string_view text) { return VX_Value(std::string(text).c_str(), 0); }

// A real number with a unit ("300 K", "25 C") in the base unit of target's type. A unit that
// does not fit sets *problem, naming the quantity and the units it accepts.
VX_Value InBaseUnit(const VX_VarParam& target, std::string_view text, std::string* problem) {
    double x = 0.0;
    std::string_view unit;
    if (!vx_units::SplitQuantity(text, x, unit)) return Text(text);
    std::string why;
    const auto conversion = vx_units::ToBase(vx_units::MeasureOf(target), unit, &why);
    if (conversion) return VX_Value(conversion->Apply(x), 0);
    if (problem) *problem = VX_BriefText(Trim(text)) + ": " + why;
    return Text(text);
}

}  // namespace

VX_Value ParseValue(const VX_VarParam& target, VX_Attr attr, std::string_view text, std::string* problem) {
    if (attr == VX_ATTR_SPEC) {
        const std::int32_t spec = VX_SpecFromText(std::string(Trim(text)).c_str());
        return spec ? VX_Value(static_cast<VX_SpecType>(spec), VX_CTX_USER, 0, 0) : Text(text);
    }
    int i = 0;
    double x = 0.0;
    switch (target.GetKind()) {
    case VX_VarParam::RealVariable:
    case VX_VarParam::RealParameter:
        if (ReadReal(text, x, problem)) return VX_Value(x, 0);
        return problem && !problem->empty() ? Text(text) : InBaseUnit(target, text, problem);
    case VX_VarParam::IntegerParameter:
        if (ReadInteger(text, i, problem)) return VX_Value(i, 0);
        return ReadReal(text, x, nullptr) ? VX_Value(x, 0) : Text(text);
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
        return ReadIntegerSet(text, *set, problem) ? VX_Value(VX_IntSetValue(set), 0) : Text(text);
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
