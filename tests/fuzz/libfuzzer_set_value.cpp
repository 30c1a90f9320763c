// libFuzzer target: any bytes as the VALUE of --set PATH=VALUE, parsed for every kind of
// variable and parameter and checked as an assignment would check it. Nothing may throw.
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "value_parsing.hpp"
#include "zorexp/zorexp.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static VX_REALVARIABLE real(true);
    static VX_INTEGERPARAMETER integer(true);
    static VX_LOGICALPARAMETER logical(true);
    static VX_STRINGPARAMETER text(true);
    static VX_INTEGERSET integers(true);
    static VX_STRINGSET texts(true);
    const std::string_view value(reinterpret_cast<const char*>(data), size);
    for (VX_VarParam* target : std::initializer_list<VX_VarParam*>{&real, &integer, &logical, &text, &integers, &texts}) {
        for (VX_Attr attr : {VX_ATTR_VALUE, VX_ATTR_SPEC}) {
            std::string problem;
            const VX_Value v = zorexp_cli::ParseValue(*target, attr, value, &problem);
            (void)target->CheckValue(attr, v);
        }
    }
    return 0;
}
