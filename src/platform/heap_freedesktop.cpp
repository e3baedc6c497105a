#include "platform/heap.h"

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace orvelle {

void keepHeapSmall() {
#ifdef __GLIBC__
    // Else every few threads get an arena of their own, and what one frees no other can use.
    constexpr int kMaxArenas = 2;
    mallopt(M_ARENA_MAX, kMaxArenas);
#endif
}

void giveBackHeap() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

}  // namespace orvelle
