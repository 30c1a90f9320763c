#include "zorexp/component_list.hpp"

#include <cctype>

const VX_ComponentListData* VX_COMPONENTLISTNAME::List() const {
    VX_Session& s = VX_Session::Current();
    const char* name = fv();
    return (name && *name) ? s.FindComponentList(name) : s.DefaultComponentList();
}

VX_StrSetValue VX_COMPONENTLISTNAME::v() const {
    RecordRead();
    const VX_ComponentListData* list = List();
    return list ? VX_StrSetValue(list->components) : VX_StrSetValue();
}

SUValue VX_ComponentListOption::v() const {
    const VX_ComponentListData* list = m_list->List();
    if (!list || !m_option) return SUValue();
    std::string key(m_option);
    for (char& c : key) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    auto it = list->options.find(key);
    return it == list->options.end() ? SUValue() : it->second;
}
