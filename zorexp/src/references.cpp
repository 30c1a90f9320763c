#include "zorexp/references.hpp"

#include <stdexcept>

#include "zorexp/container.hpp"
#include "zorexp/parameters.hpp"
#include "zorexp/text.hpp"

const char* VX_RealVariableContainerId() { return "Variable REALVARIABLE\tV7.0"; }
const char* VX_MatrixContainerId() { return "Matrix VX_Matrix\tV7.0"; }
const char* VX_IntegerParameterContainerId() { return "Parameter INTEGERPARAMETER\tV7.0"; }
const char* VX_RealParameterContainerId() { return "Parameter REALPARAMETER\tV7.0"; }
const char* VX_StringParameterContainerId() { return "Parameter STRINGPARAMETER\tV7.0"; }
const char* VX_LogicalParameterContainerId() { return "Parameter LOGICALPARAMETER\tV7.0"; }

VX_Type* VX_GlobalBase::AddProperty(VX_GlobalBase* member, VX_Type* owner, const char* name,
                                    const char* description, int flags, int reserved) {
    VX_Type::AddProperty(member, owner, name, description, flags, reserved);
    member->GlobalLink(name);
    return member;
}

VX_Type* VX_ExternalBase::AddProperty(VX_ExternalBase* member, VX_Type* owner, const char* name,
                                      const char* description, int flags, int reserved) {
    return VX_Type::AddProperty(member, owner, name, description, flags, reserved);
}

VX_ExternalBase::~VX_ExternalBase() {
    if (m_standIn) m_standIn->Release();
}

VX_Type* VX_ExternalBase::StandIn() {
    if (!m_standIn && (m_standIn = NewStandIn())) {
        m_standIn->AddRef();
        m_standIn->SetOwner(Owner(), SlotInOwner());
    }
    return m_standIn;
}

VX_HRESULT VX_ExternalBase::ExternalLink(VX_Type* object) {
    if (!object) return VX_E_POINTER;
    if (!object->ContainerDerivesFrom(ExternalTypeName())) return VX_E_WRONGKIND;
    m_target = object;
    return VX_S_OK;
}

VX_VirtualBase::~VX_VirtualBase() {
    if (m_target) m_target->Release();
}

VX_Type* VX_VirtualBase::AddProperty(VX_VirtualBase* member, VX_Type* owner, const char* name,
                                     const char* description, int flags, int reserved) {
    return VX_Type::AddProperty(member, owner, name, description, flags, reserved);
}

VX_HRESULT VX_VirtualBase::SetVirtual(VX_Type* object) {
    if (!object) return VX_E_POINTER;
    if (!object->ContainerDerivesFrom(VirtualBaseType())) return VX_E_WRONGKIND;
    if (m_target) m_target->Release();
    m_target = object;
    m_target->AddRef();
    m_target->SetOwner(this, 0);
    return VX_S_OK;
}

VX_HRESULT VX_VirtualBase::VirtualLink() {
    if (m_target) return VX_S_FALSE;
    VX_Type* made = NewDefaultVirtual();
    if (!made) return VX_E_FAIL;
    m_target = made;
    m_target->AddRef();
    m_target->SetOwner(this, 0);
    return VX_S_OK;
}

void VX_CheckLinked(const VX_GlobalBase& reference, const char* name) {
    if (!reference.Target())
        throw std::logic_error(std::string("global ") + name + " is not linked: it is declared with another type elsewhere");
}

void VX_CheckLinked(const VX_ExternalBase& reference, const char* name) {
    if (!reference.Target())
        throw std::logic_error(std::string("external reference ") + name + " is not bound to an object");
}

void VX_CheckLinked(const VX_VirtualBase& reference, const char* name) {
    if (!reference.Target()) throw std::logic_error(std::string("virtual member ") + name + " holds no object");
}

VX_Type* VX_SessionGlobalFor(const VX_ExternalBase& reference, const char* name) {
    VX_Session& session = VX_Session::Current();
    const char* kind = reference.ExternalTypeName();
    auto is = [&](const char* id) { return kind && VX_EqualCI(kind, id); };
    const bool parameter = is(VX_RealParameterContainerId()) || is(VX_IntegerParameterContainerId()) ||
                           is(VX_StringParameterContainerId()) || is(VX_LogicalParameterContainerId());
    if (!parameter || !name) return nullptr;
    // A global some block declared already is the one meant, whatever its type: the link
    // checks that it is of the reference's kind.
    if (VX_Type* existing = session.FindGlobal(name)) return existing;
    if (is(VX_RealParameterContainerId())) return session.Global<VX_REALPARAMETER>(name);
    if (is(VX_IntegerParameterContainerId())) return session.Global<VX_INTEGERPARAMETER>(name);
    if (is(VX_StringParameterContainerId())) return session.Global<VX_STRINGPARAMETER>(name);
    return session.Global<VX_LOGICALPARAMETER>(name);
}
