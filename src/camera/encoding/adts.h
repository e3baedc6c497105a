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

    bool operator==(const AdtsFormat& other) const {
        return profile == other.profile && rateIndex == other.rateIndex &&
               channels == other.channels;
    }
};

constexpr int kAdtsHeaderBytes = 7;

/// Reads an AudioSpecificConfig; nothing when ADTS cannot express it.
std::optional<AdtsFormat> adtsFormatOf(const uint8_t* config, int size);

/// The header of a frame of `payloadBytes` raw bytes.
std::vector<uint8_t> adtsHeader(const AdtsFormat& format, int payloadBytes);

/// The AudioSpecificConfig of a format, the reverse of adtsFormatOf().
std::vector<uint8_t> audioConfigOf(const AdtsFormat& format);

int sampleRateOf(const AdtsFormat& format);

/// Reads the header of one whole frame; nothing when the bytes are anything else.
std::optional<AdtsFormat> readAdtsHeader(const uint8_t* data, int size);

/// The size of the header that a whole frame starts with: one with a checksum is longer.
size_t adtsHeaderBytes(const uint8_t* data);

/// Whether the bytes start with an ADTS header.
bool startsWithAdts(const uint8_t* data, int size);

}  // namespace orvelle
