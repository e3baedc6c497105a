#include "camera/annex_b.h"

#include <initializer_list>

namespace orvelle {

namespace {

// The offset behind the next 3-byte start code, or `size`.
size_t nextUnit(const uint8_t* data, size_t size, size_t from) {
    for (size_t i = from; i + 3 < size; ++i) {
        if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1)
            return i + 3;
    }
    return size;
}

// Bit of the parameter set's kind in H.264 (SPS 7, PPS 8) or HEVC (VPS 32, SPS 33, PPS 34); 0
// for any other unit.
unsigned kindOf(AVCodecID codec, uint8_t header) {
    const bool isHevc = codec == AV_CODEC_ID_HEVC;
    const int type = isHevc ? header >> 1 & 63 : header & 31;
    const int first = isHevc ? 32 : 7;
    const int count = isHevc ? 3 : 2;
    return type >= first && type < first + count ? 1U << (type - first) : 0;
}

}  // namespace

std::vector<uint8_t> parameterSetsOf(AVCodecID codec, const uint8_t* data, size_t size) {
    std::vector<uint8_t> sets;
    unsigned kinds = 0;
    for (size_t unit = nextUnit(data, size, 0); unit < size;) {
        const size_t next = nextUnit(data, size, unit);
        const size_t end = next < size ? next - 3 : size;
        if (const unsigned kind = kindOf(codec, data[unit])) {
            kinds |= kind;
            sets.insert(sets.end(), {0, 0, 0, 1});
            sets.insert(sets.end(), data + unit, data + end);
        }
        unit = next;
    }
    const unsigned all = codec == AV_CODEC_ID_HEVC ? 7 : 3;
    return kinds == all ? sets : std::vector<uint8_t>();
}

}  // namespace orvelle
