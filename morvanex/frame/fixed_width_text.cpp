#include "frame/fixed_width_text.hpp"

#include <cstring>

void VX_BlankFill(char* field, std::size_t width) {
    if (!field || width == 0) return;
    char* zero = static_cast<char*>(std::memchr(field, '\0', width));
    if (!zero) return;
    std::memset(zero, ' ', static_cast<std::size_t>(field + width - zero));
}

void VX_BlankFillRows(char* fields, std::size_t width, std::size_t count) {
    if (!fields) return;
    for (std::size_t i = 0; i < count; ++i) VX_BlankFill(fields + i * width, width);
}

const char* VX_TrimField(const char* field, std::size_t width) {
    static char buffer[VX_TRIM_BUFFER_SIZE];
    std::size_t n = 0;
    if (field) {
        const std::size_t limit = width < VX_TRIM_BUFFER_SIZE - 1 ? width : VX_TRIM_BUFFER_SIZE - 1;
        while (n < limit && field[n] != '\0') ++n;
        while (n > 0 && field[n - 1] == ' ') --n;
        std::memcpy(buffer, field, n);
    }
    buffer[n] = '\0';
    return buffer;
}
