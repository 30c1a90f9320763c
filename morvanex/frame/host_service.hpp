#pragma once
// The host service: a reference-counted interface of the component-object kind that the host
// hands over in its initialisation record (versions 2 and 3).
#include <cstdint>

#include "zorexp/guid.hpp"
#include "zorexp/status.hpp"

struct VX_HostService {
    virtual VX_HRESULT QueryInterface(const VX_GUID& iid, void** out) = 0;
    virtual std::uint32_t AddRef() = 0;
    virtual std::uint32_t Release() = 0;

protected:
    ~VX_HostService() = default;   // released, never deleted, by the library
};

// {AA68DE17-495F-4ED4-A57A-30BFFB20ABC7}: the host's call interface, obtained from the service.
inline constexpr VX_GUID VX_IID_HostCall{0xAA68DE17, 0x495F, 0x4ED4, {0xA5, 0x7A, 0x30, 0xBF, 0xFB, 0x20, 0xAB, 0xC7}};

struct VX_HostCall : VX_HostService {
    // The fourth operation; the meaning of its arguments is the host's.
    virtual VX_HRESULT Call(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c) = 0;

protected:
    ~VX_HostCall() = default;
};

// Forwards an interface query to the host service.
// VX_E_FAIL without calling anything when the stored record's version is below 3;
// VX_E_POINTER when no host service is held (a later record of unknown version dropped it).
VX_HRESULT VX_HostServiceQueryInterface(const VX_GUID& iid, void** out);

// Obtains VX_IID_HostCall from the host service, calls its Call(a, b, c), releases it and
// returns Call's result. Fails like VX_HostServiceQueryInterface, or with the query's failure.
VX_HRESULT VX_HostServiceCall(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c);
