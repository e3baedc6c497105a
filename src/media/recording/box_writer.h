#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/recording/box_reader.h"

namespace orvelle {

/// Builds nested boxes in memory.
class BoxWriter {
public:
    void u16(uint16_t value) { number(value, 2); }
    void u32(uint32_t value) { number(value, 4); }
    void u64(uint64_t value) { number(value, 8); }
    /// A field of 64 bits, or of 32 where `isWide` is false.
    void sized(uint64_t value, bool isWide) { number(value, isWide ? 8 : 4); }
    void bytes(const BoxReader& source);

    /// Opens a box; what follows lies in it until end() with the same mark.
    size_t begin(uint32_t type);
    /// The same with the version and flags that many boxes begin with.
    size_t beginFull(uint32_t type, uint8_t version = 0, uint32_t flags = 0);
    void end(size_t mark);

    const std::vector<uint8_t>& written() const { return m_bytes; }

private:
    void number(uint64_t value, int size);

    std::vector<uint8_t> m_bytes;
};

}  // namespace orvelle
