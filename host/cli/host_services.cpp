#include "host_services.hpp"

namespace zorexp_cli {

std::int32_t HostOptionsHandler::HandleOption(std::uintptr_t, std::uintptr_t, std::uintptr_t, std::uintptr_t) {
    return -1;
}

VX_HRESULT HostService::QueryInterface(const VX_GUID& iid, void** out) {
    if (!out) return VX_E_POINTER;
    if (iid == VX_IID_IUnknown) {
        *out = this;
        AddRef();
        return VX_S_OK;
    }
    *out = nullptr;
    return VX_E_NOINTERFACE;
}

std::uint32_t HostService::AddRef() { return ++m_references; }

std::uint32_t HostService::Release() { return m_references > 1 ? --m_references : 1; }

}  // namespace zorexp_cli
