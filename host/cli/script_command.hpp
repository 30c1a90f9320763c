#pragma once
// `script TYPE NAME [--json]`: the text of a script that a type hands its host (the
// initialisation scripts of the control models), as UTF-8.
#include <string>

namespace zorexp_cli {

// The report: the text itself, or JSON with "type", "name", "index", "length" (characters,
// line feeds included) and "lines". BadInput for an unknown type or a script the type does not
// have; HostFailure when the model library cannot make the object.
std::string ScriptReport(const std::string& typeName, const std::string& scriptName, bool json);

}  // namespace zorexp_cli
