#pragma once
// Reading the cells of the type tables (*.def in this folder). A cell is DECL(x) when the type
// declares the attribute, INHERIT when it takes it from its base (at the root: from the
// runtime), and NOVALID for an integer type without a valid set. The helpers dispatch on the
// cell by pasting its first token, so a table row expands to exactly the overrides it declares.

// VX_IF_DECL(cell)(tokens...) emits the tokens only when the cell is DECL(x).
#define VX_IF_DECL(cell) VX_IF_DECL_##cell
#define VX_IF_DECL_DECL(x) VX_KEEP_TOKENS
#define VX_IF_DECL_INHERIT VX_DROP_TOKENS
#define VX_IF_DECL_NOVALID VX_DROP_TOKENS
#define VX_KEEP_TOKENS(...) __VA_ARGS__
#define VX_DROP_TOKENS(...)

// VX_DECLARED(cell): the x of DECL(x). Only meaningful inside VX_IF_DECL(cell)(...).
#define VX_DECLARED(cell) VX_DECLARED_##cell
#define VX_DECLARED_DECL(x) x

// VX_IS_DECL(cell): true when the type declares the attribute (for tables built from a row).
#define VX_IS_DECL(cell) VX_IS_DECL_##cell
#define VX_IS_DECL_DECL(x) true
#define VX_IS_DECL_INHERIT false
#define VX_IS_DECL_NOVALID false
