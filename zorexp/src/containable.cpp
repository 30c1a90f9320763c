#include "zorexp/containable.hpp"

#include "zorexp/type.hpp"

VX_HRESULT VX_Containable::QueryInterface(const VX_GUID& iid, void** out) {
    if (!out) return VX_E_POINTER;
    if (iid == VX_IID_IUnknown || iid == VX_IID_Containable) {
        *out = this;
        AddRef();
        return VX_S_OK;
    }
    *out = nullptr;
    return VX_E_NOINTERFACE;
}

std::uint32_t VX_Containable::Release() {
    const std::int32_t left = --m_refCount;
    if (left == 0) Destroy();
    return static_cast<std::uint32_t>(left < 0 ? 0 : left);
}

VX_HRESULT VX_Containable::Name(std::string& out) const {
    out = static_cast<const VX_Type*>(this)->LocalName();
    return VX_S_OK;
}

VX_Containable* VX_Containable::Containment() const { return m_owner; }

VX_Type* VX_Containable::ContainedObject(int) const { return nullptr; }
VX_Type* VX_Containable::FindProperty(const char*) const { return nullptr; }
VX_Type* VX_Containable::FindPropertyById(int) const { return nullptr; }
bool VX_Containable::PropertyNameToId(const char*, int&) const { return false; }

const char* VX_Containable::VX_DESCRIPTIONValue() const {
    return static_cast<const VX_Type*>(this)->Description();
}

VX_HRESULT VX_Containable::HostPortType(int) { return VX_E_NOTIMPL; }

bool VX_Containable::ContainerDerivesFrom(const char*) const { return false; }
int VX_Containable::JacPattern(int*&, int*&, VX_EquationType**) { return 0; }
int VX_Containable::Jacobian(double*, int, int start) { return start; }
int VX_Containable::Residuals(double*, int, int start) { return start; }
VX_HRESULT VX_Containable::CountEqnsAndNZs(int& equations, int& nonzeros) const {
    equations = 0;
    nonzeros = 0;
    return VX_S_OK;
}
int VX_Containable::ExecuteAssignments(int, int) { return VX_S_OK; }
int VX_Containable::SetUpEquations() { return 0; }
