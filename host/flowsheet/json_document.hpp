#pragma once
// JSON documents the host builds for its reports (the analysis of a flowsheet). Flowsheet
// files are read without a document (json_reader.hpp); results are written by the writers in
// results_output.hpp.
#include <nlohmann/json.hpp>

namespace zx::flowsheet {

// Objects keep their keys in the order they are added.
using Json = nlohmann::ordered_json;

}  // namespace zx::flowsheet
