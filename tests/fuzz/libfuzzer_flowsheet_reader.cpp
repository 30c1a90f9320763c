// libFuzzer target: any bytes as a flowsheet file. Reading either gives a document or refuses
// with an InputError of one line; anything else (a crash, a sanitizer report, another
// exception, a hang) is a fault libFuzzer reports.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "flowsheet/flowsheet_document.hpp"
#include "flowsheet/input_error.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        zx::flowsheet::ReadFlowsheetText(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const zx::flowsheet::InputError& e) {
        if (e.Line("f.json").find('\n') != std::string::npos) std::abort();
    }
    return 0;
}
