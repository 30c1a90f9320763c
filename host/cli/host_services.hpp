#pragma once
// What the host hands the model library at initialisation: an options handler and a host
// service object of the component-object kind. This host answers no option requests and
// offers no services beyond the base interface; the library copes with both.
#include <cstdint>

#include "zorexp/guid.hpp"
#include "zorexp/status.hpp"

namespace zorexp_cli {

// Options handler: its first operation takes four pointer-sized words and answers -1 when it
// did not deal with the request.
class HostOptionsHandler {
public:
    virtual std::int32_t HandleOption(std::uintptr_t request, std::uintptr_t a, std::uintptr_t b, std::uintptr_t c);
    virtual ~HostOptionsHandler() = default;
};

// Host service object: QueryInterface, AddRef and Release in the first three slots. It lives as
// long as the host, so reference counts are kept only for the library's sake.
class HostService {
public:
    virtual VX_HRESULT QueryInterface(const VX_GUID& iid, void** out);
    virtual std::uint32_t AddRef();
    virtual std::uint32_t Release();
    virtual ~HostService() = default;
    std::uint32_t References() const { return m_references; }

private:
    std::uint32_t m_references = 1;
};

}  // namespace zorexp_cli
