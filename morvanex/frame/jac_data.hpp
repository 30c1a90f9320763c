#pragma once
// The Jacobian-data block exported per type as _JacData<NAME>. Only the host interprets it.
// Word 0 is the block's format, 22. Words 1 to 54 hold the bytes of the type's container id,
// one byte per word, followed by zeros; a host can check that the object a factory made answers
// VX_DefaultDESCRIPTION with the same id as the block exported beside the factory.
#include <cstddef>
#include <cstdint>

inline constexpr std::int32_t VX_JACDATA_FORMAT = 22;
inline constexpr std::size_t VX_JACDATA_ID_WORDS = 54;

struct VX_JacDataBlock {
    std::int32_t words[1 + VX_JACDATA_ID_WORDS];
};

constexpr VX_JacDataBlock VX_MakeJacData(const char* containerId) {
    VX_JacDataBlock block{};
    block.words[0] = VX_JACDATA_FORMAT;
    for (std::size_t i = 0; i < VX_JACDATA_ID_WORDS && containerId[i] != '\0'; ++i)
        block.words[1 + i] = static_cast<unsigned char>(containerId[i]);
    return block;
}
