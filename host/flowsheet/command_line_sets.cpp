#include "flowsheet/command_line_sets.hpp"

#include <nlohmann/json.hpp>

#include "flowsheet/input_error.hpp"

namespace zx::flowsheet {
namespace {

constexpr std::string_view kOption = "--set ";

InputValue ValueOf(const std::string& text) {
    try {
        return InputValue::Parse(text);
    } catch (const InputError&) {
        return InputValue::Parse(nlohmann::json(text).dump());   // not JSON: the text itself
    }
}

}  // namespace

void AddCommandLineSets(FlowsheetDocument& doc, const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        const std::string where = std::string(kOption) + VX_BriefText(argument);
        const auto eq = argument.find('=');
        const auto dot = argument.find('.');
        if (eq == std::string::npos || dot == std::string::npos || dot == 0 || dot + 1 >= eq)
            throw InputError(where, "expected BLOCK.PATH=VALUE, such as --set 'C1.T_COOL=300 K'");
        const std::string blockName = argument.substr(0, dot);
        BlockSpec* block = nullptr;
        for (BlockSpec& b : doc.blocks)
            if (b.name == blockName) block = &b;
        if (!block) throw InputError(where, "the flowsheet has no block \"" + VX_BriefText(blockName) + "\"");
        block->sets.push_back(SetEntry{argument.substr(dot + 1, eq - dot - 1), ValueOf(argument.substr(eq + 1)), where, {}});
    }
}

bool IsCommandLineSet(const std::string& pointer) { return pointer.starts_with(kOption); }

}  // namespace zx::flowsheet
