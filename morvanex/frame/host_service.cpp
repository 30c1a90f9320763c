#include "frame/host_service.hpp"

#include "frame/library_entry.hpp"

namespace {
// The host service is reached only once the host has declared it with a record of version 3.
VX_HRESULT HostServiceOrFailure(VX_HostService*& service) {
    service = nullptr;
    if (VX_LibraryInitializationData()->version < 3) return VX_E_FAIL;
    service = VX_CurrentHostService();
    return service ? VX_S_OK : VX_E_POINTER;
}
}  // namespace

VX_HRESULT VX_HostServiceQueryInterface(const VX_GUID& iid, void** out) {
    VX_HostService* service = nullptr;
    if (const VX_HRESULT hr = HostServiceOrFailure(service); hr != VX_S_OK) return hr;
    return service->QueryInterface(iid, out);
}

VX_HRESULT VX_HostServiceCall(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c) {
    VX_HostService* service = nullptr;
    if (const VX_HRESULT hr = HostServiceOrFailure(service); hr != VX_S_OK) return hr;
    void* raw = nullptr;
    const VX_HRESULT found = service->QueryInterface(VX_IID_HostCall, &raw);
    if (VX_Failed(found)) return found;
    if (!raw) return VX_E_NOINTERFACE;
    auto* call = static_cast<VX_HostCall*>(raw);
    const VX_HRESULT result = call->Call(a, b, c);
    call->Release();
    return result;
}
