#pragma once

namespace orvelle {

/// Keeps the heap of a process with many threads small. To be called before the first of them.
void keepHeapSmall();

/// Gives what was freed back to the system; takes some milliseconds. Any thread.
void giveBackHeap();

}  // namespace orvelle
