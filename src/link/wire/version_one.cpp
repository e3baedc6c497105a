#include "link/wire/version_one.h"

#include <algorithm>
#include <cstring>

namespace orvelle {

namespace {

// A handshake packet of the transport: 16 bytes of header, 48 of handshake; all big-endian.
constexpr size_t kHandshakeBytes = 64;
constexpr uint8_t kControlBit = 0x80;
constexpr size_t kDestinationAt = 12;
constexpr size_t kVersionAt = 16;
constexpr size_t kExtensionAt = 20;
constexpr size_t kPacketBytesAt = 28;
constexpr size_t kWindowAt = 32;
constexpr size_t kRequestAt = 36;
constexpr size_t kSocketAt = 40;

constexpr uint32_t kInduction = 1;
constexpr uint32_t kRefusalBase = 1000;
constexpr uint32_t kWrongVersion = 1505;  // the code by which version 1 knows it
constexpr uint32_t kDatagram = 2;
constexpr uint32_t kProbeSocket = 0x2F0A11CE;  // any number that an answer can repeat

void put(Bytes& to, size_t at, uint32_t value) {
    for (size_t i = 0; i < 4; ++i)
        to[at + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

uint32_t get(const uint8_t* from, size_t at) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i)
        value = value << 8 | from[at + i];
    return value;
}

bool isHandshake(const uint8_t* data, size_t size) {
    constexpr uint8_t kType[4] = {kControlBit, 0, 0, 0};
    return size >= kHandshakeBytes && std::equal(std::begin(kType), std::end(kType), data);
}

}  // namespace

std::optional<Bytes> refusalOfVersionOne(const uint8_t* data, size_t size) {
    // Only what a caller begins with, so that two cameras never answer each other.
    const bool isCall = isHandshake(data, size) && get(data, kDestinationAt) == 0 &&
                        get(data, kRequestAt) == kInduction && get(data, kSocketAt) != 0;
    if (!isCall)
        return std::nullopt;
    Bytes answer(data, data + kHandshakeBytes);
    put(answer, kDestinationAt, get(data, kSocketAt));
    put(answer, kRequestAt, kRefusalBase + kWrongVersion);
    return answer;
}

Bytes versionOneProbe() {
    Bytes probe(kHandshakeBytes, 0);
    probe[0] = kControlBit;
    put(probe, kVersionAt, 4);
    put(probe, kExtensionAt, kDatagram);
    put(probe, kPacketBytesAt, 1500);
    put(probe, kWindowAt, 8192);
    put(probe, kRequestAt, kInduction);
    put(probe, kSocketAt, kProbeSocket);
    return probe;
}

bool isVersionOneAnswer(const uint8_t* data, size_t size) {
    return isHandshake(data, size) && get(data, kDestinationAt) == kProbeSocket &&
           get(data, kRequestAt) == kInduction;
}

}  // namespace orvelle
