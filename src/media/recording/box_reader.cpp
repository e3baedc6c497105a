#include "media/recording/box_reader.h"

namespace orvelle {

namespace {

constexpr size_t kHeaderBytes = 8;

}  // namespace

BoxReader BoxReader::take(size_t size) {
    if (size > m_size) {
        m_isGood = false;
        m_size = 0;
        return {};
    }
    const BoxReader taken(m_bytes, size);
    m_bytes += size;
    m_size -= size;
    return taken;
}

uint64_t BoxReader::number(size_t size) {
    const BoxReader field = take(size);
    uint64_t value = 0;
    for (size_t i = 0; i < field.m_size; ++i)
        value = value << 8 | field.m_bytes[i];
    return value;
}

bool BoxReader::next(Box& box) {
    if (m_size == 0)
        return false;
    const uint32_t size = BoxReader(*this).u32();
    // Sizes of 64 bits belong to media data, which is never read through here.
    if (size < kHeaderBytes || size > m_size) {
        m_isGood = false;
        return false;
    }
    box.whole = take(size);
    box.body = box.whole;
    box.body.skip(4);
    box.type = box.body.u32();
    return true;
}

BoxReader BoxReader::find(uint32_t type) const {
    BoxReader reader = *this;
    for (Box box; reader.next(box);) {
        if (box.type == type)
            return box.body;
    }
    return {};
}

}  // namespace orvelle
