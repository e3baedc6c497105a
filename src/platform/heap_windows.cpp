#include "platform/heap.h"

namespace orvelle {

void keepHeapSmall() {
    // All threads share one heap here.
}

}  // namespace orvelle
