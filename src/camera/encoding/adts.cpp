#include "camera/encoding/adts.h"

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

std::vector<uint8_t> audioConfigOf(const AdtsFormat& format) {
    return {static_cast<uint8_t>((format.profile + 1) << 3 | format.rateIndex >> 1),
            static_cast<uint8_t>((format.rateIndex & 1) << 7 | format.channels << 3)};
}

int sampleRateOf(const AdtsFormat& format) {
    constexpr int kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                              22050, 16000, 12000, 11025, 8000,  7350};
    return kRates[format.rateIndex];
}

std::optional<AdtsFormat> readAdtsHeader(const uint8_t* data, int size) {
    if (!startsWithAdts(data, size))
        return {};
    const int length = (data[3] & 3) << 11 | data[4] << 3 | data[5] >> 5;
    const AdtsFormat format{data[2] >> 6, data[2] >> 2 & 15, (data[2] & 1) << 2 | data[3] >> 6};
    const bool isOneBlock = (data[6] & 3) == 0;
    if (length != size || size_t(size) <= adtsHeaderBytes(data) || !isOneBlock ||
        format.rateIndex > 12 || format.channels < 1)
        return {};
    return format;
}

size_t adtsHeaderBytes(const uint8_t* data) {
    return data[1] & 1 ? size_t{kAdtsHeaderBytes} : size_t{kAdtsHeaderBytes} + 2;
}

bool startsWithAdts(const uint8_t* data, int size) {
    return size >= kAdtsHeaderBytes && data[0] == 0xFF && (data[1] & 0xF6) == 0xF0;
}

}  // namespace orvelle
