#pragma once
// Interface identifiers of the component-object kind, and the ones this runtime answers to.
#include <cstdint>
#include <cstring>

struct VX_GUID {
    std::uint32_t data1;
    std::uint16_t data2, data3;
    std::uint8_t data4[8];
    bool operator==(const VX_GUID& o) const { return std::memcmp(this, &o, sizeof *this) == 0; }
};

// {00000000-0000-0000-C000-000000000046}: the universal base interface.
inline constexpr VX_GUID VX_IID_IUnknown{0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
// The runtime's primary container interface.
inline constexpr VX_GUID VX_IID_Containable{0x6E0F51A2, 0x3C1B, 0x4D0E, {0x9A, 0x41, 0x20, 0x7D, 0x5B, 0x13, 0xC8, 0x01}};
// The expression interface of models, ports and structures.
inline constexpr VX_GUID VX_IID_ModelExtensions{0x6E0F51A2, 0x3C1B, 0x4D0E, {0x9A, 0x41, 0x20, 0x7D, 0x5B, 0x13, 0xC8, 0x02}};
// The discontinuity interface of models.
inline constexpr VX_GUID VX_IID_ModelDiscontinuity{0x6E0F51A2, 0x3C1B, 0x4D0E, {0x9A, 0x41, 0x20, 0x7D, 0x5B, 0x13, 0xC8, 0x03}};
// The second-generation expression interface of models.
inline constexpr VX_GUID VX_IID_ModelExtensions2{0x6E0F51A2, 0x3C1B, 0x4D0E, {0x9A, 0x41, 0x20, 0x7D, 0x5B, 0x13, 0xC8, 0x04}};
