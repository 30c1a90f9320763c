#pragma once
// Where the build puts the routine libraries the tests load.
#include <string>

inline std::string QelpLibrary() { return std::string(ZX_ROUTINE_DIR) + "/libqelp.so"; }
inline std::string LocalModelLibrary() { return std::string(ZX_ROUTINE_DIR) + "/libVXPropMod.so"; }
inline std::string MorvanexPropertyLibrary() { return std::string(ZX_ROUTINE_DIR) + "/libMorvanex.so"; }
