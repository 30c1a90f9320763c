#include "zorexp/sets.hpp"

#include <algorithm>

VX_Set::~VX_Set() {
    for (VX_SetDependent* d : m_dependents) d->IndexSetDestroyed();
}

void VX_Set::AddDependent(VX_SetDependent* d) const {
    if (std::find(m_dependents.begin(), m_dependents.end(), d) == m_dependents.end()) m_dependents.push_back(d);
}

void VX_Set::RemoveDependent(VX_SetDependent* d) const {
    m_dependents.erase(std::remove(m_dependents.begin(), m_dependents.end(), d), m_dependents.end());
}

void VX_Set::NotifyDependents() const {
    for (VX_SetDependent* d : m_dependents) d->IndexSetChanged();
}

std::shared_ptr<const VX_IntSetData> VX_INTEGERSET::Empty() {
    static const auto empty = std::make_shared<const VX_IntSetData>();
    return empty;
}

std::shared_ptr<const VX_StrSetData> VX_STRINGSET::Empty() {
    static const auto empty = std::make_shared<const VX_StrSetData>();
    return empty;
}

VX_INTEGERSET& VX_INTEGERSET::operator=(const VX_INTEGERSET& o) {
    VX_Set::operator=(o);
    m_data = o.m_data;
    NotifyDependents();
    return *this;
}

VX_STRINGSET& VX_STRINGSET::operator=(const VX_STRINGSET& o) {
    VX_Set::operator=(o);
    m_data = o.m_data;
    NotifyDependents();
    return *this;
}
