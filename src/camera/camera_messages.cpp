#include "camera/camera_messages.h"

#include <algorithm>
#include <cstring>

namespace orvelle {

namespace {

constexpr int kFullHdHeight = 900;  ///< from here on a picture counts as full HD
constexpr int kHdHeight = 600;
constexpr int64_t kMegabyte = 1024 * 1024;

void put32(std::vector<uint8_t>& payload, size_t offset, uint32_t value) {
    for (int byte = 0; byte < 4; ++byte)
        payload[offset + byte] = static_cast<uint8_t>(value >> (8 * byte));
}

// Cuts between characters, so that the text stays valid UTF-8 and keeps its NUL.
void putText(std::vector<uint8_t>& payload, size_t offset, size_t fieldBytes, const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    size_t bytes = std::min<size_t>(utf8.size(), fieldBytes - 1);
    while (bytes > 0 && bytes < size_t(utf8.size()) && (uint8_t(utf8[int(bytes)]) & 0xC0) == 0x80)
        --bytes;
    std::memcpy(payload.data() + offset, utf8.constData(), bytes);
}

// The top two bits of the version's middle bytes say how clients read the quality: 0 full HD
// (up to 2) or HD, 1 HD or VGA.
uint32_t versionFlags(const CameraProfile& profile) {
    return profile.pictureHeight < kHdHeight ? 0x00404000 : 0;
}

uint8_t qualityOf(const CameraProfile& profile) {
    return profile.pictureHeight >= kFullHdHeight ? 1 : 3;
}

}  // namespace

std::vector<uint8_t> streamQualityReply(const CameraProfile& profile) {
    std::vector<uint8_t> payload(8);
    payload[4] = qualityOf(profile);
    return payload;
}

std::vector<uint8_t> deviceInfoReply(const CameraProfile& profile, const CardSpace& card) {
    std::vector<uint8_t> payload(56);
    putText(payload, 0, 16,
            profile.deviceType == 1 ? QStringLiteral("OC-PT1") : QStringLiteral("OC-1"));
    putText(payload, 16, 16, QStringLiteral("Orvelle"));
    put32(payload, 32, kFirmwareVersion | versionFlags(profile));
    put32(payload, 40, static_cast<uint32_t>(card.totalBytes / kMegabyte));
    put32(payload, 44, static_cast<uint32_t>(card.freeBytes / kMegabyte));
    return payload;
}

std::vector<uint8_t> wifiReply(const CameraProfile& profile) {
    std::vector<uint8_t> payload(102);
    putText(payload, 0, 32, profile.networkName);
    putText(payload, 68, 16, profile.ipAddress);
    putText(payload, 84, 18, profile.macAddress);
    return payload;
}

std::vector<uint8_t> timezoneReply(const CameraProfile& profile) {
    std::vector<uint8_t> payload(12);
    put32(payload, 0, 12);
    put32(payload, 4, 1);
    put32(payload, 8, static_cast<uint32_t>(minutesEastOfUtc(profile.timezoneMinutes)));
    return payload;
}

std::vector<uint8_t> deviceTypeReply(const CameraProfile& profile) {
    std::vector<uint8_t> payload(4);
    put32(payload, 0, static_cast<uint32_t>(profile.deviceType));
    return payload;
}

}  // namespace orvelle
