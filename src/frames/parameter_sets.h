#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" {
#include <libavcodec/codec_id.h>
}

struct AVCodecParameters;

namespace orvelle {

/// One NAL unit inside an Annex B byte stream; offsets into that stream.
struct NalUnit {
    size_t startCode;  ///< first byte of its 3- or 4-byte start code
    size_t header;     ///< first byte behind the start code
    size_t end;        ///< behind its last byte, trailing zeros not counted
};

/// Walks the NAL units of an Annex B byte stream, whatever the bytes are. Borrows the bytes.
class NalScanner {
public:
    NalScanner(const uint8_t* bytes, size_t size) : m_bytes(bytes), m_size(size) {}
    /// False when there is no further non-empty unit.
    bool next(NalUnit& unit);

private:
    size_t findStartCode(size_t from) const;

    const uint8_t* m_bytes;
    size_t m_size;
    size_t m_position = 0;
};

/// The parameter sets (H.264: SPS and PPS; HEVC: VPS, SPS and PPS) that stand before the first
/// picture in an access unit, with their start codes, in their order. Empty when a needed kind is
/// missing, and for other codecs.
std::vector<uint8_t> parameterSets(AVCodecID codec, const uint8_t* bytes, size_t size);

/// Replaces the codec header by a copy of `bytes`; false when out of memory.
bool setExtradata(AVCodecParameters& codec, const std::vector<uint8_t>& bytes);

}  // namespace orvelle
