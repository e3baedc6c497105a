#include "frames/parameter_sets.h"

#include <algorithm>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace orvelle {

namespace {

constexpr size_t kStartCodeBytes = 3;
/// What the 16-bit lengths of an MP4 codec header can hold.
constexpr size_t kLongestSet = 0xFFFF;

/// How one codec numbers its NAL units.
struct NalTypes {
    int shift;
    int mask;
    int firstSet;  ///< the kinds of parameter sets are consecutive types
    int setKinds;
    int firstPicture;
    int lastPicture;

    int typeOf(uint8_t header) const { return (header >> shift) & mask; }
    bool isPicture(int type) const { return type >= firstPicture && type <= lastPicture; }
    bool isSet(int type) const { return type >= firstSet && type < firstSet + setKinds; }
};

constexpr NalTypes kH264 = {0, 0x1F, 7, 2, 1, 5};
constexpr NalTypes kHevc = {1, 0x3F, 32, 3, 0, 31};

const NalTypes* nalTypesOf(AVCodecID codec) {
    switch (codec) {
        case AV_CODEC_ID_H264:
            return &kH264;
        case AV_CODEC_ID_HEVC:
            return &kHevc;
        default:
            return nullptr;
    }
}

}  // namespace

size_t NalScanner::findStartCode(size_t from) const {
    size_t at = from;
    while (at + kStartCodeBytes <= m_size) {
        if (m_bytes[at + 2] > 1)
            at += 3;
        else if (m_bytes[at] == 0 && m_bytes[at + 1] == 0 && m_bytes[at + 2] == 1)
            return at;
        else
            ++at;
    }
    return m_size;
}

bool NalScanner::next(NalUnit& unit) {
    for (size_t code = findStartCode(m_position); code < m_size; code = findStartCode(m_position)) {
        unit.startCode = code > m_position && m_bytes[code - 1] == 0 ? code - 1 : code;
        unit.header = code + kStartCodeBytes;
        // Zeros before a start code belong to no unit; the last of them may be the code's own.
        unit.end = findStartCode(unit.header);
        while (unit.end > unit.header && m_bytes[unit.end - 1] == 0)
            --unit.end;
        m_position = unit.end;
        if (unit.end > unit.header)
            return true;
    }
    return false;
}

std::vector<uint8_t> parameterSets(AVCodecID codec, const uint8_t* bytes, size_t size) {
    const NalTypes* types = nalTypesOf(codec);
    if (!types)
        return {};
    std::vector<uint8_t> sets;
    int kindsSeen = 0;
    NalScanner scanner(bytes, size);
    for (NalUnit unit; scanner.next(unit);) {
        const int type = types->typeOf(bytes[unit.header]);
        if (types->isPicture(type))
            break;
        if (!types->isSet(type) || unit.end - unit.header > kLongestSet)
            continue;
        kindsSeen |= 1 << (type - types->firstSet);
        sets.insert(sets.end(), bytes + unit.startCode, bytes + unit.end);
    }
    if (kindsSeen != (1 << types->setKinds) - 1)
        sets.clear();
    return sets;
}

bool setExtradata(AVCodecParameters& codec, const std::vector<uint8_t>& bytes) {
    auto* copy = static_cast<uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!copy)
        return false;
    std::copy(bytes.begin(), bytes.end(), copy);
    av_free(codec.extradata);
    codec.extradata = copy;
    codec.extradata_size = static_cast<int>(bytes.size());
    return true;
}

}  // namespace orvelle
