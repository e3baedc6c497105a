#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace orvelle {

/// What a 7-byte ADTS header says of raw AAC.
struct AdtsFormat {
    int profile;    ///< audio object type minus 1
    int rateIndex;  ///< of the table of 13 sample rates
    int channels;   ///< 1 to 7
};

constexpr int kAdtsHeaderBytes = 7;

/// Reads an AudioSpecificConfig; nothing when ADTS cannot express it.
std::optional<AdtsFormat> adtsFormatOf(const uint8_t* config, int size);

/// The header of a frame of `payloadBytes` raw bytes.
std::vector<uint8_t> adtsHeader(const AdtsFormat& format, int payloadBytes);

/// Whether the bytes start with an ADTS header.
bool startsWithAdts(const uint8_t* data, int size);

}  // namespace orvelle
