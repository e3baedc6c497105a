#include "frames/frame_info.h"

namespace orvelle {

std::array<uint8_t, FrameInfo::kBytes> encodeFrameInfo(const FrameInfo& info) {
    std::array<uint8_t, FrameInfo::kBytes> bytes{};
    bytes[0] = static_cast<uint8_t>(info.codecId);
    bytes[1] = static_cast<uint8_t>(info.codecId >> 8);
    bytes[2] = info.flags;
    bytes[3] = info.cameraIndex;
    bytes[4] = info.onlineCount;
    bytes[5] = info.sequence;
    for (unsigned i = 0; i < 4; ++i)
        bytes[12 + i] = static_cast<uint8_t>(info.timestampMs >> (8 * i));
    return bytes;
}

std::optional<FrameInfo> decodeFrameInfo(const void* bytes, size_t size) {
    if (!bytes || size < FrameInfo::kBytes)
        return std::nullopt;
    const auto* b = static_cast<const uint8_t*>(bytes);
    FrameInfo info;
    info.codecId = static_cast<uint16_t>(b[0] | b[1] << 8);
    info.flags = b[2];
    info.cameraIndex = b[3];
    info.onlineCount = b[4];
    info.sequence = b[5];
    for (unsigned i = 0; i < 4; ++i)
        info.timestampMs |= static_cast<uint32_t>(b[12 + i]) << (8 * i);
    return info;
}

}  // namespace orvelle
