#include "frames/picture_role.h"

#include "frames/parameter_sets.h"

namespace orvelle {

namespace {

/// The first `size` bytes of a slice header, which no emulation prevention can have reached yet.
class SliceBits {
public:
    SliceBits(const uint8_t* bytes, size_t size) : m_bytes(bytes), m_bits(8 * size) {}

    /// An Exp-Golomb number; -1 where it is too long to be one of those at the start of a header.
    int number() {
        int zeros = 0;
        while (zeros <= kMostZeros && !bit())
            ++zeros;
        if (zeros > kMostZeros)
            return -1;
        int value = 1;
        for (int i = 0; i < zeros; ++i)
            value = 2 * value + bit();
        return value - 1;
    }

private:
    static constexpr int kMostZeros = 8;

    int bit() {
        if (m_at >= m_bits)
            return 0;
        const int value = (m_bytes[m_at / 8] >> (7 - m_at % 8)) & 1;
        ++m_at;
        return value;
    }

    const uint8_t* m_bytes;
    size_t m_bits;
    size_t m_at = 0;
};

PictureRole roleInH264(const uint8_t* unit, size_t size, bool isKey) {
    constexpr int kInstantRefresh = 5;
    constexpr int kIntra = 2;  // of slice types, which count twice to 5
    if ((unit[0] & 0x1F) == kInstantRefresh)
        return PictureRole::kFresh;
    if ((unit[0] & 0x60) == 0)
        return PictureRole::kDisposable;
    SliceBits header(unit + 1, size - 1);
    const int firstBlock = header.number();
    const bool isIntra = firstBlock == 0 && header.number() % 5 == kIntra;
    return isKey && isIntra ? PictureRole::kFresh : PictureRole::kLink;
}

PictureRole roleInHevc(int type) {
    constexpr int kFirstRandomAccess = 16;
    if (type >= kFirstRandomAccess)
        return PictureRole::kFresh;
    // Below it even types are those that their own layer does not refer to.
    return type % 2 == 0 ? PictureRole::kDisposable : PictureRole::kLink;
}

}  // namespace

PictureRole pictureRole(AVCodecID codec, const uint8_t* bytes, size_t size, bool isKey) {
    const bool isHevc = codec == AV_CODEC_ID_HEVC;
    NalScanner scanner(bytes, size);
    for (NalUnit unit; (isHevc || codec == AV_CODEC_ID_H264) && scanner.next(unit);) {
        const uint8_t* const start = bytes + unit.header;
        const int type = isHevc ? start[0] >> 1 & 0x3F : start[0] & 0x1F;
        if (isHevc && type < 32)
            return roleInHevc(type);
        if (!isHevc && type >= 1 && type <= 5)
            return roleInH264(start, unit.end - unit.header, isKey);
    }
    return isKey ? PictureRole::kFresh : PictureRole::kLink;
}

}  // namespace orvelle
