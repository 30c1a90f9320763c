#pragma once
// Options handlers: objects through which the host answers option requests of the library.
// The host hands one over at initialisation; RegisterDummyOptionsHandler puts the library's
// proxy in front of it.
#include <cstdint>

class ZormOptionsHandler {
public:
    // The answer to one request (its four words are the host's), or VX_OPTIONS_NOT_HANDLED.
    virtual std::int32_t HandleOptions(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c,
                                       std::uintptr_t d) = 0;

protected:
    ~ZormOptionsHandler() = default;   // handlers are owned by whoever made them, never by the library
};

inline constexpr std::int32_t VX_OPTIONS_NOT_HANDLED = -1;

// Chains two handlers: the one that was current when the proxy was installed is asked first,
// then the fallback. There is one proxy per library.
class ProxyOptionsHandler final : public ZormOptionsHandler {
public:
    std::int32_t HandleOptions(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c,
                               std::uintptr_t d) override;

    // The handler given to RegisterDummyOptionsHandler. The value 1 there is a marker, not an
    // object: it is kept here as given but never called.
    ZormOptionsHandler* fallback = nullptr;
    // The handler that was current when the proxy was installed; null when there was none.
    ZormOptionsHandler* previous = nullptr;
};
