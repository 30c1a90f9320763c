#pragma once
// References to objects that live elsewhere: global parameters shared by a flowsheet,
// external objects linked by the runtime, and virtual members whose object is chosen later.
#include <string>

#include "zorexp/session.hpp"
#include "zorexp/type.hpp"

class VX_GlobalBase : public VX_Type {
public:
    // Registers a global reference under its name and links it to the session's global.
    static VX_Type* AddProperty(VX_GlobalBase* member, VX_Type* owner, const char* name,
                                const char* description, int flags, int reserved);
    virtual VX_HRESULT GlobalLink(const char* name) = 0;
    VX_Type* Target() const { return m_target; }

protected:
    VX_Type* m_target = nullptr;
};

// A reference to the global of type T with the registered name: a parameter shared by every
// block of a flowsheet (PI, EPS, ...) or a structure (a reaction configuration). The first
// declaration fixes the global's type; a reference of another type is left unlinked and the
// session keeps the reason (VX_E_WRONGKIND), which the driver reports before any evaluation.
template <class T>
class VX_Global : public VX_GlobalBase {
public:
    VX_Global() = default;
    VX_HRESULT GlobalLink(const char* name) override {
        std::string why;
        m_target = VX_Session::Current().template Global<T>(name, &why);
        if (m_target) return VX_S_OK;
        VX_Session::Current().ReportFailure(VX_E_WRONGKIND, this, "GlobalLink", why);
        return VX_E_WRONGKIND;
    }
    T& operator*() const { return *static_cast<T*>(m_target); }
    T* operator->() const { return static_cast<T*>(m_target); }
};

// A reference to a global structure (the structure lives in the session, one per name): linked
// like any other global.
template <class T>
using VX_GlobalStructureRef = VX_Global<T>;

class VX_ExternalBase : public VX_Type {
public:
    VX_ExternalBase() = default;
    // A copy starts unlinked and without a stand-in: the stand-in belongs to the original.
    VX_ExternalBase(const VX_ExternalBase&) : VX_Type() {}
    VX_ExternalBase& operator=(const VX_ExternalBase&) { return *this; }
    ~VX_ExternalBase() override;
    static VX_Type* AddProperty(VX_ExternalBase* member, VX_Type* owner, const char* name,
                                const char* description, int flags, int reserved);
    // An object of the referenced type that this reference owns and that stands for what a
    // flowsheet would bind, so that a block can be looked at alone: made on first call, named
    // like the reference (so paths reach it), null when the type cannot stand alone (an array).
    VX_Type* StandIn();
    // The container id the linked object is checked against.
    virtual const char* ExternalTypeName() const = 0;
    // Links the reference to an object; refused (VX_E_WRONGKIND) when the object does not
    // derive from ExternalTypeName().
    VX_HRESULT ExternalLink(VX_Type* object);
    VX_Type* Target() const { return m_target; }
    bool IsLinked() const { return m_target != nullptr; }

protected:
    virtual VX_Type* NewStandIn() const { return nullptr; }
    VX_Type* m_target = nullptr;

private:
    VX_Type* m_standIn = nullptr;
};

class VX_VirtualBase : public VX_Type {
public:
    VX_VirtualBase() = default;
    // A copy starts without an object: the object belongs to the original alone.
    VX_VirtualBase(const VX_VirtualBase&) : VX_Type() {}
    VX_VirtualBase& operator=(const VX_VirtualBase&) { return *this; }
    ~VX_VirtualBase() override;
    static VX_Type* AddProperty(VX_VirtualBase* member, VX_Type* owner, const char* name,
                                const char* description, int flags, int reserved);
    virtual const char* VirtualBaseType() const = 0;
    virtual VX_Type* NewDefaultVirtual() = 0;
    // Places an object (owned from then on) in the virtual member; refused when it does not
    // derive from VirtualBaseType().
    VX_HRESULT SetVirtual(VX_Type* object);
    // Makes the default object when none was chosen.
    VX_HRESULT VirtualLink();
    void InitializeSystemAttributes() {}
    VX_Type* Target() const { return m_target; }

protected:
    VX_Type* m_target = nullptr;
};

// The flowsheet's global behind an external reference to a parameter that nothing else binds
// (a mixer's EPS or GLOBALPDRIVEN): the session's global of the reference's name, made of the
// reference's kind (real, integer, text or logical parameter) when no block declared it yet.
// Null for references to anything else: those are bound by path.
VX_Type* VX_SessionGlobalFor(const VX_ExternalBase& reference, const char* name);

// Throws std::logic_error naming the reference when nothing is linked to it (a global declared
// with another type elsewhere, an external nobody bound): equations cannot use it.
void VX_CheckLinked(const VX_GlobalBase& reference, const char* name);
void VX_CheckLinked(const VX_ExternalBase& reference, const char* name);
void VX_CheckLinked(const VX_VirtualBase& reference, const char* name);

// Container id of runtime types, used by references to check what they are linked to.
const char* VX_RealVariableContainerId();
const char* VX_MatrixContainerId();
const char* VX_IntegerParameterContainerId();
const char* VX_RealParameterContainerId();
const char* VX_StringParameterContainerId();
const char* VX_LogicalParameterContainerId();
