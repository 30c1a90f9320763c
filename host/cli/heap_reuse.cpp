#include "heap_reuse.hpp"

#include <malloc.h>

#include <climits>

namespace zorexp_cli {

void KeepFreedMemoryForReuse() {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
}

}  // namespace zorexp_cli
