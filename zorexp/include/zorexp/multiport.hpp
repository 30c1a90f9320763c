#pragma once
// Multiports: a port property that holds any number of named connections. It is an array of
// ports over the string set of its connection names, in the order the connections were made;
// each connection gets a port of its own, which the owning model reads like any port.
#include <string>

#include "zorexp/arrays.hpp"
#include "zorexp/model_type.hpp"

class VX_MULTIPORT_BaseType : public VX_BASE_S {
public:
    bool IsAMultiport() const override { return true; }
    // 4: the connections are inlets, 8: outlets, 12: either.
    int Direction() const override { return m_direction; }
    // The names of the connections, in the order they were made.
    const VX_STRINGSET& Connections() const { return m_connections; }
    // Adds a connection and returns its port; null with *why set when the name is empty or is
    // already a connection of this multiport (compared without regard to case).
    VX_PortType* AddConnection(const std::string& name, std::string* why);
    VX_PortType& PortAt(std::ptrdiff_t position) const { return static_cast<VX_PortType&>(*At(static_cast<int>(position))); }

protected:
    explicit VX_MULTIPORT_BaseType(int direction);
    VX_MULTIPORT_BaseType(const VX_MULTIPORT_BaseType& o);
    VX_MULTIPORT_BaseType& operator=(const VX_MULTIPORT_BaseType& o);

private:
    VX_STRINGSET m_connections;
    int m_direction;
};

// The multiport of one port type; T is the port class.
template <class T>
class VX_MULTIPORT : public VX_MULTIPORT_BaseType {
public:
    VX_Type* NewElement() override { return new T(true); }
    T& PortAt(std::ptrdiff_t position) const { return static_cast<T&>(VX_MULTIPORT_BaseType::PortAt(position)); }
    T& operator()(const VX_StringSetIter& it) const { return static_cast<T&>(GetAt(it)); }
    T& operator()(const char* name) const { return static_cast<T&>(Get(name)); }

protected:
    explicit VX_MULTIPORT(int direction) : VX_MULTIPORT_BaseType(direction) {}
    VX_MULTIPORT(const VX_MULTIPORT&) = default;
    VX_MULTIPORT& operator=(const VX_MULTIPORT&) = default;
};
