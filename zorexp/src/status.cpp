#include "zorexp/status.hpp"

#include "zorexp/text.hpp"

const char* VX_StatusMessage(std::int32_t code) {
    switch (static_cast<std::uint32_t>(code)) {
#define VX_STATUS(name, value, text) case value##u: return text;
#include "zorexp/status.def"
#undef VX_STATUS
    }
    return "unknown status";
}

const char* VX_AssignStatusMessage(std::int32_t code) {
    switch (code) {
#define VX_ASSIGN_STATUS(name, value, text) case value: return text;
#include "zorexp/assign_status.def"
#undef VX_ASSIGN_STATUS
    }
    return "unknown assignment status";
}

const char* VX_SpecText(std::int32_t code) {
    switch (code) {
#define VX_SPEC_TYPE(name, value, text) case value: return text;
#include "zorexp/spec_types.def"
#undef VX_SPEC_TYPE
    }
    return nullptr;
}

std::int32_t VX_SpecFromText(const char* text) {
#define VX_SPEC_TYPE(name, value, label) if (text && VX_EqualCI(text, label)) return value;
#include "zorexp/spec_types.def"
#undef VX_SPEC_TYPE
    return 0;
}
