#pragma once

#include <cstdint>

namespace orvelle {

enum class NativeMessage {
    Other,
    SessionEnd,      ///< the user's session ends: quit
    AboutToSuspend,  ///< the system goes to sleep
};

/// What a Windows message of this number and first parameter says.
NativeMessage decodeNativeMessage(uint32_t number, uint64_t wParam);

/// The same for the arguments of a native event filter. `message` is looked at only where
/// `eventType` is one of this system's own message types.
NativeMessage nativeMessage(const char* eventType, const void* message);

}  // namespace orvelle
