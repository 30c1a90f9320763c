#include "stocklib/generic_bases.hpp"

// The component list is registered as "ComponentList"; the port's connection flag as
// "ISCONNECTED". Both come first, before the properties of any derived class.

#define VX_GENERIC_COMMON(CLS, BASE)                                                    \
    CLS::CLS(const CLS& o) : BASE(o), m_componentList(o.m_componentList) {}            \
    CLS& CLS::operator=(const CLS& o) {                                                 \
        BASE::operator=(o);                                                             \
        m_componentList = o.m_componentList;                                            \
        return *this;                                                                   \
    }                                                                                   \
    bool CLS::ContainerDerivesFrom(const char* id) const {                              \
        return (id && VX_EqualCI(id, VX_ContainerId())) || BASE::ContainerDerivesFrom(id); \
    }

VX_GENERICMODEL::VX_GENERICMODEL(bool constructProperties) : m_componentList(true) {
    if (constructProperties) Construct();
}
void VX_GENERICMODEL::Construct() {
    VX_Type::AddProperty(&m_componentList, this, "ComponentList", "Component list", 0, 0);
}
VX_GENERIC_COMMON(VX_GENERICMODEL, VX_ModelTypeEx2)

VX_GENERICSTREAM::VX_GENERICSTREAM(bool constructProperties) : m_componentList(true) {
    if (constructProperties) Construct();
}
void VX_GENERICSTREAM::Construct() {
    VX_Type::AddProperty(&m_componentList, this, "ComponentList", "Component list", 0, 0);
}
VX_GENERIC_COMMON(VX_GENERICSTREAM, VX_ModelTypeEx2)

VX_GENERICSTRUCTURE::VX_GENERICSTRUCTURE(bool constructProperties) : m_componentList(true) {
    if (constructProperties) Construct();
}
void VX_GENERICSTRUCTURE::Construct() {
    VX_Type::AddProperty(&m_componentList, this, "ComponentList", "Component list", 0, 0);
}
VX_GENERIC_COMMON(VX_GENERICSTRUCTURE, VX_StructureTypeEx)

VX_GENERICPORT::VX_GENERICPORT(bool constructProperties) : m_componentList(true), m_isConnected(true) {
    if (constructProperties) Construct();
}
VX_GENERICPORT::VX_GENERICPORT(const VX_GENERICPORT& o)
    : VX_PortTypeEx(o), m_componentList(o.m_componentList), m_isConnected(o.m_isConnected),
      m_hostPortType(o.m_hostPortType) {}
VX_GENERICPORT& VX_GENERICPORT::operator=(const VX_GENERICPORT& o) {
    VX_PortTypeEx::operator=(o);
    m_componentList = o.m_componentList;
    m_isConnected = o.m_isConnected;
    m_hostPortType = o.m_hostPortType;
    return *this;
}
void VX_GENERICPORT::Construct() {
    VX_Type::AddProperty(&m_componentList, this, "ComponentList", "Component list", 0, 0);
    VX_Type::AddProperty(&m_isConnected, this, "ISCONNECTED", "Port is connected", 0, 0);
}
// The flag is the runtime's to set: no assignment of a model outranks it.
void VX_GENERICPORT::MarkConnected(bool connected) {
    const VX_Value flag(connected, VX_CTX_MODEL, 32767, 0);
    m_isConnected.Assign(&flag);
}

bool VX_GENERICPORT::ContainerDerivesFrom(const char* id) const {
    return (id && VX_EqualCI(id, VX_ContainerId())) || VX_PortTypeEx::ContainerDerivesFrom(id);
}
