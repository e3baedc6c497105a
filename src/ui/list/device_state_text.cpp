#include "ui/list/device_state_text.h"

#include "core/language.h"
#include "device/device.h"

namespace orvelle {

static QString keyOf(DeviceState state) {
    switch (state) {
        case DeviceState::kNeverTried:
        case DeviceState::kConnecting:
            return QStringLiteral("connecting");
        case DeviceState::kWrongPassword:
            return QStringLiteral("wrong_password");
        case DeviceState::kRefused:
            return QStringLiteral("camera_is_busy");
        case DeviceState::kUnreachable:
        case DeviceState::kTimedOut:
            return QStringLiteral("unreachable");
        case DeviceState::kOnline:
        case DeviceState::kCancelled:
        case DeviceState::kClosedByCamera:
        case DeviceState::kLost:
        case DeviceState::kClosed:
            break;
    }
    return QStringLiteral("offline");
}

QString deviceStateText(const KvDevice& device) {
    return KvLanguage::getString(device.isOnline() ? QStringLiteral("online")
                                                   : keyOf(device.state()));
}

}  // namespace orvelle
