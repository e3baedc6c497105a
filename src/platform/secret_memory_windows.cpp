#include "platform/secret_memory.h"

#include <windows.h>

namespace orvelle {

void keepMemorySecret() {
    // A crash then ends the process at once, without the service that writes and sends dumps.
    SetErrorMode(GetErrorMode() | SEM_NOGPFAULTERRORBOX);
}

}  // namespace orvelle
