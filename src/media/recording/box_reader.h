#pragma once

#include <cstddef>
#include <cstdint>

namespace orvelle {

/// The four letters of a box's type as the file holds them, first letter highest.
constexpr uint32_t boxType(const char (&name)[5]) {
    return uint32_t(uint8_t(name[0])) << 24 | uint32_t(uint8_t(name[1])) << 16 |
           uint32_t(uint8_t(name[2])) << 8 | uint32_t(uint8_t(name[3]));
}

struct Box;

/// Reads big-endian fields and nested boxes out of a run of bytes, which it borrows. Reading
/// beyond the end gives zeros and makes the reader bad for good.
class BoxReader {
public:
    BoxReader() = default;
    BoxReader(const uint8_t* bytes, size_t size) : m_bytes(bytes), m_size(size) {}

    bool isGood() const { return m_isGood; }
    size_t left() const { return m_size; }
    const uint8_t* data() const { return m_bytes; }  ///< what is left

    uint32_t u32() { return static_cast<uint32_t>(number(4)); }
    uint64_t u64() { return number(8); }
    void skip(size_t size) { take(size); }
    /// The next `size` bytes; empty when there are fewer.
    BoxReader take(size_t size);

    /// Moves on to the next box; false at the end, and when what follows is no whole box.
    bool next(Box& box);
    /// The body of the first box of that type in what is left; empty when there is none.
    BoxReader find(uint32_t type) const;

private:
    uint64_t number(size_t size);

    const uint8_t* m_bytes = nullptr;
    size_t m_size = 0;
    bool m_isGood = true;
};

/// One box: its bytes from the size field on, and what lies behind its type.
struct Box {
    uint32_t type = 0;
    BoxReader whole;
    BoxReader body;
};

}  // namespace orvelle
