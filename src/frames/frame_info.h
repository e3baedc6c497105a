#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace orvelle {

/// The header that travels with every video and audio frame; 16 bytes, little-endian:
///
///     0      2     3        4        5          6      8      12          16
///     | codec | key | camera | online | sequence | zero | zero | timestamp |
struct FrameInfo {
    static constexpr size_t kBytes = 16;

    uint16_t codecId = 0;  ///< a camera codec id
    uint8_t flags = 0;     ///< non-zero: key frame
    uint8_t cameraIndex = 0;
    uint8_t onlineCount = 0;
    uint8_t sequence = 0;  ///< of the stream's frames, wraps after 255
    uint32_t timestampMs = 0;

    bool isKey() const { return flags != 0; }
    double timeSec() const { return timestampMs / 1000.0; }
};

std::array<uint8_t, FrameInfo::kBytes> encodeFrameInfo(const FrameInfo& info);

/// Nothing when fewer than FrameInfo::kBytes bytes are given; more are ignored.
std::optional<FrameInfo> decodeFrameInfo(const void* bytes, size_t size);

}  // namespace orvelle
