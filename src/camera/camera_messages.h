#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "camera/camera_profile.h"
#include "camera/card/card_store.h"

// The payloads of a camera's answers, and the sizes of the requests that it reads.

namespace orvelle {

constexpr uint32_t kFirmwareVersion = 0x01010106;  ///< shown as 1.1.1.6

constexpr size_t kShortRequestBytes = 4;
constexpr size_t kRequestBytes = 8;
constexpr size_t kRoomBytes = 16;         ///< room for a playback
constexpr size_t kLongRequestBytes = 24;  ///< record playback and event lists

/// quality at 4 of 8 bytes; with the firmware version it names the picture's size class.
std::vector<uint8_t> streamQualityReply(const CameraProfile& profile);

/// model 0, vendor 16 (texts of 16 bytes), version 32, channels 36, card size 40 and free
/// space 44 in MB; 56 bytes. Without a card both are 0.
std::vector<uint8_t> deviceInfoReply(const CameraProfile& profile, const CardSpace& card);

/// network name 0 (32), password 32 (32, never sent), mode, encryption, signal and status 64
/// to 67, IP address 68 (16), MAC address 84 (18); 102 bytes.
std::vector<uint8_t> wifiReply(const CameraProfile& profile);

/// own size 0, supported 4, minutes east of UTC 8; 12 bytes.
std::vector<uint8_t> timezoneReply(const CameraProfile& profile);

/// device type at 0; 4 bytes.
std::vector<uint8_t> deviceTypeReply(const CameraProfile& profile);

}  // namespace orvelle
