#include "frame/options_handlers.hpp"

namespace {
// Values below 2 given as a fallback are no object: 0 is none, 1 is the "no handler" marker.
bool IsHandler(const ZormOptionsHandler* h) { return reinterpret_cast<std::uintptr_t>(h) > 1; }
}  // namespace

std::int32_t ProxyOptionsHandler::HandleOptions(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c,
                                                std::uintptr_t d) {
    if (previous) {
        const std::int32_t answer = previous->HandleOptions(a, b, c, d);
        if (answer != VX_OPTIONS_NOT_HANDLED) return answer;
    }
    if (IsHandler(fallback)) return fallback->HandleOptions(a, b, c, d);
    return VX_OPTIONS_NOT_HANDLED;
}
