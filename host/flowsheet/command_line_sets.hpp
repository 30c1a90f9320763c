#pragma once
// Values set on the command line of the flowsheet commands (--set BLOCK.PATH=VALUE), added to
// a flowsheet read from its file as if the file set them last. VALUE is read as a JSON value
// where it is one (5, 2.5, true, [1, 2]) and as a text otherwise ("TCool-Spec", "300 K").
#include <string>
#include <vector>

#include "flowsheet/flowsheet_document.hpp"

namespace zx::flowsheet {

// Throws InputError (located at "--set ARGUMENT") for a malformed argument or an unknown block.
// The entries' pointers are "--set ARGUMENT" too, so that faults found when they are applied
// name the argument.
void AddCommandLineSets(FlowsheetDocument& doc, const std::vector<std::string>& arguments);
// Whether an error's pointer names a command-line value rather than a place in the file.
bool IsCommandLineSet(const std::string& pointer);

}  // namespace zx::flowsheet
