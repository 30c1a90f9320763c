#include "zorexp/sets.hpp"

std::shared_ptr<const VX_IntSetData> VX_INTEGERSET::Empty() {
    static const auto empty = std::make_shared<const VX_IntSetData>();
    return empty;
}

std::shared_ptr<const VX_StrSetData> VX_STRINGSET::Empty() {
    static const auto empty = std::make_shared<const VX_StrSetData>();
    return empty;
}

VX_INTEGERSET& VX_INTEGERSET::operator=(const VX_INTEGERSET& o) {
    VX_VarParam::operator=(o);
    m_data = o.m_data;
    return *this;
}

VX_STRINGSET& VX_STRINGSET::operator=(const VX_STRINGSET& o) {
    VX_VarParam::operator=(o);
    m_data = o.m_data;
    return *this;
}
