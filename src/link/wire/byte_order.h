#pragma once

#include <cstdint>

/// Little-endian integers in byte buffers; the caller checks the room.
namespace orvelle {

inline void putU16(uint8_t* to, uint16_t value) {
    to[0] = static_cast<uint8_t>(value);
    to[1] = static_cast<uint8_t>(value >> 8);
}

inline void putU32(uint8_t* to, uint32_t value) {
    putU16(to, static_cast<uint16_t>(value));
    putU16(to + 2, static_cast<uint16_t>(value >> 16));
}

inline void putU64(uint8_t* to, uint64_t value) {
    putU32(to, static_cast<uint32_t>(value));
    putU32(to + 4, static_cast<uint32_t>(value >> 32));
}

inline uint16_t getU16(const uint8_t* from) {
    return static_cast<uint16_t>(from[0] | from[1] << 8);
}

inline uint32_t getU32(const uint8_t* from) {
    return getU16(from) | static_cast<uint32_t>(getU16(from + 2)) << 16;
}

inline uint64_t getU64(const uint8_t* from) {
    return getU32(from) | static_cast<uint64_t>(getU32(from + 4)) << 32;
}

}  // namespace orvelle
