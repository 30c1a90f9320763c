#include "flowsheet/json_pointer.hpp"

namespace zx::flowsheet {

std::string PointerChild(const std::string& pointer, std::string_view key) {
    std::string out;
    out.reserve(pointer.size() + key.size() + 1);
    out += pointer;
    out += '/';
    for (char c : key) {
        if (c == '~') out += "~0";
        else if (c == '/') out += "~1";
        else out += c;
    }
    return out;
}

std::string PointerChild(const std::string& pointer, std::size_t index) {
    return pointer + "/" + std::to_string(index);
}

}  // namespace zx::flowsheet
