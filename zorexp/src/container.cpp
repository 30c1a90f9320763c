#include "zorexp/container.hpp"

#include "zorexp/sets.hpp"
#include "zorexp/text.hpp"

int VX_Container::Register(VX_Type* member, const char* name, const char* description, int flags) {
    m_props.push_back(VX_PropertyEntry{member, name, description, flags});
    return static_cast<int>(m_props.size()) - 1;
}

VX_Type* VX_Container::FindProperty(const char* name) const {
    if (!name) return nullptr;
    for (const auto& p : m_props)
        if (VX_EqualCI(p.name, name)) return p.object;
    return nullptr;
}

VX_Type* VX_Container::FindPropertyById(int id) const {
    if (id < 1 || id > static_cast<int>(m_props.size())) return nullptr;
    return m_props[static_cast<std::size_t>(id - 1)].object;
}

bool VX_Container::PropertyNameToId(const char* name, int& id) const {
    for (std::size_t k = 0; k < m_props.size(); ++k)
        if (VX_EqualCI(m_props[k].name, name)) { id += static_cast<int>(k) + 1; return true; }
    return false;
}

VX_Type* VX_Container::ContainedObject(int index) const {
    if (index < 0 || index >= static_cast<int>(m_props.size())) return nullptr;
    return m_props[static_cast<std::size_t>(index)].object;
}

int VX_Container::InitialiseInternalIndexSet(VX_Set& set, const VX_Value& value, int) {
    // The set follows the model: a value of the model context replaces what it had, whatever
    // its level, so that a second pass in the same call sees the parameters the first changed.
    VX_Value v(value);
    v.Stamp(value.Context(), 32767, value.Ordinal());
    return set.VALUE().Assign(&v);
}
