#include "platform/native_message.h"

#include <windows.h>

#include <cstring>

namespace orvelle {

NativeMessage nativeMessage(const char* eventType, const void* message) {
    if (std::strcmp(eventType, "windows_generic_MSG") != 0 &&
        std::strcmp(eventType, "windows_dispatcher_MSG") != 0)
        return NativeMessage::Other;
    const MSG* msg = static_cast<const MSG*>(message);
    return decodeNativeMessage(msg->message, msg->wParam);
}

}  // namespace orvelle
