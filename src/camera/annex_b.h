#pragma once

#include <cstdint>
#include <vector>

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace orvelle {

/// The parameter sets (SPS and PPS; VPS as well for HEVC) of an Annex B access unit, each behind
/// a 4-byte start code; empty unless every kind is there. Accepts start codes of 3 and 4 bytes.
std::vector<uint8_t> parameterSetsOf(AVCodecID codec, const uint8_t* data, size_t size);

}  // namespace orvelle
