#pragma once
// The host's name for the runtime's path resolution (zorexp/property_paths.hpp).
#include "zorexp/property_paths.hpp"

namespace zorexp_cli {

using PathResolution = VX_PathResolution;
inline PathResolution ResolvePath(VX_Type& root, std::string_view path) { return VX_ResolvePath(root, path); }

}  // namespace zorexp_cli
