#include "platform/native_message.h"

namespace orvelle {
namespace {

constexpr uint32_t kQueryEndSession = 0x0011;
constexpr uint32_t kPowerBroadcast = 0x0218;
constexpr uint64_t kPowerSuspend = 4;

}  // namespace

NativeMessage decodeNativeMessage(uint32_t number, uint64_t wParam) {
    if (number == kQueryEndSession)
        return NativeMessage::SessionEnd;
    if (number == kPowerBroadcast && wParam == kPowerSuspend)
        return NativeMessage::AboutToSuspend;
    return NativeMessage::Other;
}

}  // namespace orvelle
