#pragma once
// Helpers for expanding registry.def: the EXPORTS and CONTENT columns are words, turned here
// into values and into conditional expansion, so each generator names only what it needs.
//
//   VX_IF_EXPORTED(EXPORTS, text...)  expands to text for EXPORTED rows, to nothing otherwise
//   VX_IF_EMPTY(CONTENT, text...)     expands to text for EMPTY rows, to nothing for the others
//   VX_CONTAINER_ID(KIND, NAME)       the row's container id, e.g. "Model RPLUG_TCOOL1\tV7.0"

#define VX_ROW_IS_EXPORTED_EXPORTED true
#define VX_ROW_IS_EXPORTED_NOT_EXPORTED false
#define VX_ROW_IS_EXPORTED(EXPORTS) VX_ROW_IS_EXPORTED_##EXPORTS

#define VX_ROW_IS_MODELLED_MODELLED true
#define VX_ROW_IS_MODELLED_PROPERTIES true
#define VX_ROW_IS_MODELLED_EMPTY false
#define VX_ROW_IS_MODELLED(CONTENT) VX_ROW_IS_MODELLED_##CONTENT

#define VX_ROW_HAS_EQUATIONS_MODELLED true
#define VX_ROW_HAS_EQUATIONS_PROPERTIES false
#define VX_ROW_HAS_EQUATIONS_EMPTY false
#define VX_ROW_HAS_EQUATIONS(CONTENT) VX_ROW_HAS_EQUATIONS_##CONTENT

#define VX_IF_EXPORTED_EXPORTED(...) __VA_ARGS__
#define VX_IF_EXPORTED_NOT_EXPORTED(...)
#define VX_IF_EXPORTED(EXPORTS, ...) VX_IF_EXPORTED_##EXPORTS(__VA_ARGS__)

#define VX_IF_EMPTY_EMPTY(...) __VA_ARGS__
#define VX_IF_EMPTY_MODELLED(...)
#define VX_IF_EMPTY_PROPERTIES(...)
#define VX_IF_EMPTY(CONTENT, ...) VX_IF_EMPTY_##CONTENT(__VA_ARGS__)

#define VX_CONTAINER_VERSION "V7.0"
#define VX_CONTAINER_ID(KIND, NAME) #KIND " " #NAME "\t" VX_CONTAINER_VERSION
