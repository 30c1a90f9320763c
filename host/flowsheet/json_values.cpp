#include "flowsheet/json_values.hpp"

#include <climits>
#include <vector>

#include "zorexp/sets.hpp"

namespace zx::flowsheet {

std::optional<VX_Value> ValueFromJson(const Json& v, std::string* why) {
    switch (v.type()) {
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned: {
        // Integers beyond the runtime's integer range can still be real values.
        if (v.is_number_unsigned() ? v.get<unsigned long long>() > INT_MAX
                                   : (v.get<long long>() > INT_MAX || v.get<long long>() < INT_MIN))
            return VX_Value(v.get<double>(), 0);
        return VX_Value(static_cast<int>(v.get<long long>()), 0);
    }
    case Json::value_t::number_float: return VX_Value(v.get<double>(), 0);
    case Json::value_t::boolean: return VX_Value(v.get<bool>(), 0);
    case Json::value_t::string: return VX_Value(v.get_ref<const std::string&>().c_str(), 0);
    case Json::value_t::array: {
        // A set: all integers or all texts.
        bool ints = true, texts = true;
        for (const Json& item : v) {
            ints = ints && item.is_number_integer() && item.get<long long>() >= INT_MIN && item.get<long long>() <= INT_MAX;
            texts = texts && item.is_string();
        }
        if (ints) {
            auto data = std::make_shared<VX_IntSetData>();
            for (const Json& item : v) data->Add(static_cast<int>(item.get<long long>()));
            return VX_Value(VX_IntSetValue(std::shared_ptr<const VX_IntSetData>(std::move(data))), 0);
        }
        if (texts) {
            std::vector<std::string> members;
            for (const Json& item : v) members.push_back(item.get<std::string>());
            return VX_Value(VX_StrSetValue(std::move(members)), 0);
        }
        if (why) *why = "a list must hold only integers or only texts, got " + JsonBrief(v);
        return std::nullopt;
    }
    default:
        if (why) *why = JsonBrief(v) + " is not a value";
        return std::nullopt;
    }
}

std::optional<VX_Value> SpecFromJson(const Json& v, std::string* why) {
    const std::int32_t code = v.is_string() ? VX_SpecFromText(v.get_ref<const std::string&>().c_str()) : 0;
    if (code == 0) {
        if (why) *why = "expects a spec (Fixed, Free, Initial, RateInitial), got " + JsonBrief(v);
        return std::nullopt;
    }
    return VX_Value(static_cast<VX_SpecType>(code), VX_CTX_USER, 0, 0);
}

}  // namespace zx::flowsheet
