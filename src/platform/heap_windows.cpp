#include "platform/heap.h"

namespace orvelle {

void keepHeapSmall() {
    // All threads share one heap here.
}

void giveBackHeap() {
    // The system's heap does so by itself.
}

}  // namespace orvelle
