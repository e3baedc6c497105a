#include "camera/adts.h"

namespace orvelle {

// AudioSpecificConfig: 5 bits object type, 4 bits rate index, 4 bits channels. Object types above
// 4 (spectral band replication among them) and explicit rates have no place in ADTS.
std::optional<AdtsFormat> adtsFormatOf(const uint8_t* config, int size) {
    if (size < 2)
        return {};
    const int objectType = config[0] >> 3;
    const int rateIndex = (config[0] & 7) << 1 | config[1] >> 7;
    const int channels = config[1] >> 3 & 15;
    if (objectType < 1 || objectType > 4 || rateIndex > 12 || channels < 1 || channels > 7)
        return {};
    return AdtsFormat{objectType - 1, rateIndex, channels};
}

// Fields: 12 bits sync, 1 version, 2 layer, 1 "no checksum", 2 profile, 4 rate, 1 private, 3
// channels, 4 flags, 13 length with header, 11 fullness (all ones: variable), 2 blocks.
std::vector<uint8_t> adtsHeader(const AdtsFormat& format, int payloadBytes) {
    const int length = payloadBytes + kAdtsHeaderBytes;
    return {
        0xFF,
        0xF1,
        static_cast<uint8_t>(format.profile << 6 | format.rateIndex << 2 | format.channels >> 2),
        static_cast<uint8_t>((format.channels & 3) << 6 | length >> 11),
        static_cast<uint8_t>(length >> 3),
        static_cast<uint8_t>((length & 7) << 5 | 0x1F),
        0xFC};
}

bool startsWithAdts(const uint8_t* data, int size) {
    return size >= kAdtsHeaderBytes && data[0] == 0xFF && (data[1] & 0xF6) == 0xF0;
}

}  // namespace orvelle
