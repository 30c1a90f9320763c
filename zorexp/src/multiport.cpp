#include "zorexp/multiport.hpp"

#include <vector>

VX_MULTIPORT_BaseType::VX_MULTIPORT_BaseType(int direction) : m_connections(true), m_direction(direction) {
    SetDim(m_connections);
}

// A copy starts without connections: they join the original's ports to other blocks.
VX_MULTIPORT_BaseType::VX_MULTIPORT_BaseType(const VX_MULTIPORT_BaseType& o)
    : VX_BASE_S(), m_connections(true), m_direction(o.m_direction) {
    SetDim(m_connections);
}

VX_MULTIPORT_BaseType& VX_MULTIPORT_BaseType::operator=(const VX_MULTIPORT_BaseType& o) {
    m_direction = o.m_direction;
    return *this;
}

VX_PortType* VX_MULTIPORT_BaseType::AddConnection(const std::string& name, std::string* why) {
    if (name.empty()) {
        if (why) *why = "a connection to a multiport needs a name";
        return nullptr;
    }
    const VX_StrSetData& current = m_connections.fv();
    if (current.Contains(name)) {
        if (why) *why = "the multiport " + Path() + " has a connection named " + name + " already";
        return nullptr;
    }
    std::vector<std::string> members = current.Members();
    members.push_back(name);
    const VX_Value value(VX_StrSetValue(std::move(members)), VX_CTX_MODEL, 32767, 0);
    m_connections.Assign(&value);   // the array follows its set: the new port is made here
    return &PortAt(static_cast<std::ptrdiff_t>(m_connections.fv().Size()) - 1);
}
