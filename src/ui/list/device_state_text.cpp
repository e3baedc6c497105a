#include "ui/list/device_state_text.h"

#include <algorithm>

#include "device/device.h"
#include "device/device_group.h"
#include "ui/widgets/text.h"

namespace orvelle {

namespace {

constexpr QColor kOnlineColour(0x4c, 0xd9, 0x64);
constexpr QColor kWaitingColour(0xff, 0xcc, 0x00);
constexpr QColor kFaultColour(0xff, 0x6b, 0x6b);
constexpr QColor kOfflineColour(0xb8, 0xb8, 0xb8);

const char* keyOf(DeviceState state) {
    switch (state) {
        case DeviceState::kNeverTried:
        case DeviceState::kConnecting:
            return textKey("connecting");
        case DeviceState::kWrongPassword:
            return textKey("wrong_password");
        case DeviceState::kWrongVersion:
            return textKey("incompatible_version");
        case DeviceState::kFull:
            return textKey("too_many_viewers");
        case DeviceState::kRefusedForNow:
            return textKey("refused_for_now");
        case DeviceState::kRefused:
            return textKey("connection_refused");
        case DeviceState::kNoNetwork:
            return textKey("no_network");
        case DeviceState::kNoFreeChannel:
            return textKey("too_many_cameras");
        case DeviceState::kUnreachable:
        case DeviceState::kTimedOut:
            return textKey("unreachable");
        case DeviceState::kOnline:
        case DeviceState::kCancelled:
        case DeviceState::kClosedByCamera:
        case DeviceState::kLost:
        case DeviceState::kClosed:
            break;
    }
    return textKey("offline");
}

EntryState groupState(const QList<KvDevice*>& devices) {
    const auto online = std::count_if(devices.begin(), devices.end(),
                                      [](const KvDevice* device) { return device->isOnline(); });
    const QString text = QStringLiteral("%1/%2").arg(online).arg(devices.size());
    if (online == 0)
        return {text, kOfflineColour};
    return {text, online == devices.size() ? kOnlineColour : kWaitingColour};
}

}  // namespace

QString deviceStateText(const KvDevice& device) {
    return text(device.isOnline() ? textKey("online") : keyOf(device.state()));
}

QColor deviceStateColour(const KvDevice& device) {
    if (device.isOnline())
        return kOnlineColour;
    switch (device.state()) {
        case DeviceState::kNeverTried:
        case DeviceState::kConnecting:
        case DeviceState::kFull:
        case DeviceState::kRefusedForNow:
            return kWaitingColour;
        case DeviceState::kWrongPassword:
        case DeviceState::kWrongVersion:
        case DeviceState::kRefused:
        case DeviceState::kNoNetwork:
        case DeviceState::kNoFreeChannel:
            return kFaultColour;
        default:
            return kOfflineColour;
    }
}

bool needsNewCode(const KvDevice& device) {
    return !device.isOnline() && device.state() == DeviceState::kWrongPassword;
}

bool needsNewCode(const KvDeviceGroup& entry) {
    const KvDevice* device =
        entry.type() == KvDeviceGroup::kSingleCamera ? entry.firstDevice() : nullptr;
    return device && needsNewCode(*device);
}

EntryState entryState(const KvDeviceGroup& entry) {
    if (entry.type() == KvDeviceGroup::kGroup)
        return groupState(entry.devices());
    const KvDevice* device = entry.firstDevice();
    if (!device)
        return {text("offline"), kOfflineColour};
    return {deviceStateText(*device), deviceStateColour(*device)};
}

}  // namespace orvelle
