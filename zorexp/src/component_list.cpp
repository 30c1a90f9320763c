#include "zorexp/component_list.hpp"

#include <cctype>

const VX_ComponentListData* VX_COMPONENTLISTNAME::List() const {
    VX_Session& s = VX_Session::Current();
    const char* name = fv();
    return (name && *name) ? s.FindComponentList(name) : s.DefaultComponentList();
}

VX_StrSetValue VX_COMPONENTLISTNAME::v() const {
    RecordRead();
    static const auto* const none = new std::shared_ptr<const VX_StrSetData>(std::make_shared<VX_StrSetData>());
    const VX_ComponentListData* list = List();
    return VX_StrSetValue(list ? list->components : *none);
}

SUValue VX_ComponentListOption::v() const {
    const VX_ComponentListData* list = m_list->List();
    if (!list || !m_option) return SUValue();
    std::string key(m_option);
    for (char& c : key) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    auto it = list->options.find(key);
    return it == list->options.end() ? SUValue() : it->second;
}

VX_StrSetValue VX_ComponentListOption::StringSet() const {
    const SUValue value = v();
    if (value.ValueType() == SUValue::VT_Empty) return VX_StrSetValue();
    const std::string text = value.String();
    if (text.find('"') != std::string::npos) return VX_StrSetValue(text.c_str());
    return VX_StrSetValue(text.empty() ? std::vector<std::string>{} : std::vector<std::string>{text});
}
