#pragma once
// The host's large arrays (a solve's patterns, Jacobian values, solver vectors) come and go one
// after another. Served from the heap and kept there when freed, the next one reuses pages that
// are already mapped, instead of the kernel mapping and zeroing fresh ones for each.
namespace zorexp_cli {

// Tunes the C allocator so: no separate mappings for large blocks, nothing handed back to the
// system before exit. When the heap cannot grow, the allocator still falls back to a mapping.
void KeepFreedMemoryForReuse();

}  // namespace zorexp_cli
