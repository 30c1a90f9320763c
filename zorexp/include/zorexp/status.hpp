#pragma once
// Result codes of the runtime, assignment outcomes and spec codes, each generated from its .def table.
#include <cstdint>

using VX_HRESULT = std::int32_t;

enum VX_Status : std::int32_t {
#define VX_STATUS(name, code, text) name = static_cast<std::int32_t>(code##u),
#include "zorexp/status.def"
#undef VX_STATUS
};

enum VX_AssignStatus : std::int32_t {
#define VX_ASSIGN_STATUS(name, code, text) name = code,
#include "zorexp/assign_status.def"
#undef VX_ASSIGN_STATUS
};

enum VX_SpecType : std::int32_t {
#define VX_SPEC_TYPE(name, code, text) name = code,
#include "zorexp/spec_types.def"
#undef VX_SPEC_TYPE
};

// Message of a status code; "unknown status" for codes outside the table.
const char* VX_StatusMessage(std::int32_t code);
const char* VX_AssignStatusMessage(std::int32_t code);
// Text of a spec code ("Fixed", "Free", ...); nullptr for an unknown code.
const char* VX_SpecText(std::int32_t code);
// Spec code for a text, compared without regard to case; 0 when unknown.
std::int32_t VX_SpecFromText(const char* text);

inline bool VX_Failed(std::int32_t code) { return code < 0; }
