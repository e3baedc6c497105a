#include "platform/native_message.h"

namespace orvelle {

NativeMessage nativeMessage(const char*, const void*) {
    return NativeMessage::Other;
}

}  // namespace orvelle
