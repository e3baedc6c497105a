#include "media/recording/box_writer.h"

namespace orvelle {

void BoxWriter::number(uint64_t value, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        m_bytes.push_back(static_cast<uint8_t>(value >> shift));
}

void BoxWriter::bytes(const BoxReader& source) {
    m_bytes.insert(m_bytes.end(), source.data(), source.data() + source.left());
}

size_t BoxWriter::begin(uint32_t type) {
    const size_t mark = m_bytes.size();
    u32(0);
    u32(type);
    return mark;
}

size_t BoxWriter::beginFull(uint32_t type, uint8_t version, uint32_t flags) {
    const size_t mark = begin(type);
    u32(static_cast<uint32_t>(version) << 24 | flags);
    return mark;
}

void BoxWriter::end(size_t mark) {
    const size_t size = m_bytes.size() - mark;
    for (size_t i = 0; i < 4; ++i)
        m_bytes[mark + i] = static_cast<uint8_t>(size >> (24 - 8 * i));
}

}  // namespace orvelle
