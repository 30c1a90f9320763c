#include "zorexp/references.hpp"

#include <stdexcept>

#include "zorexp/container.hpp"

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
