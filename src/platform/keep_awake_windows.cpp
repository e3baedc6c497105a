#include "platform/keep_awake.h"

#include <windows.h>

namespace orvelle {

// The system keeps the request for the calling thread, so there is nothing to hold.
struct KeepAwake::Request {};

KeepAwake::KeepAwake() {
    SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED | ES_DISPLAY_REQUIRED);
}

KeepAwake::~KeepAwake() {
    SetThreadExecutionState(ES_CONTINUOUS);
}

}  // namespace orvelle
