#pragma once
// VX_Container: an object with named properties, registered in order by VX_Type::AddProperty.
#include <vector>

#include "zorexp/type.hpp"

class VX_Set;
class VX_Value;

struct VX_PropertyEntry {
    VX_Type* object;
    const char* name;          // static text of the generated code
    const char* description;   // may be null
    int flags;
};

class VX_Container : public VX_Type {
public:
    const std::vector<VX_PropertyEntry>& Properties() const { return m_props; }
    // Case-insensitive lookup by name; null when absent.
    VX_Type* FindProperty(const char* name) const override;
    // Identifiers count from 1 in registration order.
    VX_Type* FindPropertyById(int id) const override;
    bool PropertyNameToId(const char* name, int& id) const override;
    VX_Type* ContainedObject(int index) const override;
    // The runtime root derives from nothing the library names.
    bool ContainerDerivesFrom(const char*) const override { return false; }

    // Registration (used by VX_Type::AddProperty); returns the slot.
    int Register(VX_Type* member, const char* name, const char* description, int flags);

    // Sets an internal index set (the set an array of this container is sized over, which users
    // do not set). pass counts the times one call of ExecuteAssignments sets it (0, 1, ...).
    // Returns the assignment status.
    int InitialiseInternalIndexSet(VX_Set& set, const VX_Value& value, int pass);

protected:
    VX_Container() = default;
    // Copies never share the property table of the original: members register themselves
    // with their own container when it is constructed.
    VX_Container(const VX_Container&) : VX_Type() {}
    VX_Container& operator=(const VX_Container&) { return *this; }

private:
    std::vector<VX_PropertyEntry> m_props;
};
