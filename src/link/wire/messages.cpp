#include "link/wire/byte_order.h"
#include "link/wire/wire.h"

#include <algorithm>
#include <cstring>

namespace orvelle {

namespace {

enum class Kind : uint8_t {
    Hello = 1,
    Welcome = 2,
    Ping = 3,
    Pong = 4,
    Bye = 5,
    Control = 6,
    Video = 7,
    Audio = 8,
};

constexpr size_t kShortBytes = 4;  // HELLO, WELCOME
constexpr size_t kTokenBytes = 8;  // PING, PONG, BYE
constexpr size_t kControlHeaderBytes = 8;
static_assert(kControlHeaderBytes + kMaxControlBytes <= kMaxMessageBytes);

EncodedMessage begin(Kind kind, size_t size) {
    EncodedMessage out;
    out.size = size;
    std::memset(out.bytes.data(), 0, std::min<size_t>(size, kFragmentHeaderBytes));
    out.bytes[0] = static_cast<uint8_t>(kind);
    return out;
}

EncodedMessage encodeShort(Kind kind, uint8_t version) {
    EncodedMessage out = begin(kind, kShortBytes);
    out.bytes[1] = version;
    return out;
}

EncodedMessage encodeToken(Kind kind, uint32_t token) {
    EncodedMessage out = begin(kind, kTokenBytes);
    putU32(&out.bytes[4], token);
    return out;
}

struct Encoder {
    EncodedMessage operator()(const HelloMessage& m) const {
        return encodeShort(Kind::Hello, m.version);
    }
    EncodedMessage operator()(const WelcomeMessage& m) const {
        return encodeShort(Kind::Welcome, m.version);
    }
    EncodedMessage operator()(const PingMessage& m) const {
        return encodeToken(Kind::Ping, m.token);
    }
    EncodedMessage operator()(const PongMessage& m) const {
        return encodeToken(Kind::Pong, m.token);
    }
    EncodedMessage operator()(const ByeMessage& m) const {
        return encodeToken(Kind::Bye, static_cast<uint32_t>(m.reason));
    }
    EncodedMessage operator()(const ControlMessage& m) const {
        EncodedMessage out = begin(Kind::Control, kControlHeaderBytes + m.size);
        putU16(&out.bytes[2], static_cast<uint16_t>(m.size));
        putU32(&out.bytes[4], m.type);
        if (m.size)
            std::memcpy(&out.bytes[kControlHeaderBytes], m.data, m.size);
        return out;
    }
    EncodedMessage operator()(const FrameFragment& m) const {
        EncodedMessage out =
            begin(m.isVideo ? Kind::Video : Kind::Audio, kFragmentHeaderBytes + m.size);
        putU16(&out.bytes[2], m.index);
        putU16(&out.bytes[4], m.count);
        putU32(&out.bytes[8], m.number);
        putU32(&out.bytes[12], m.totalBytes);
        std::copy(m.info.begin(), m.info.end(), &out.bytes[16]);
        std::memcpy(&out.bytes[kFragmentHeaderBytes], m.data, m.size);
        return out;
    }
};

std::optional<Message> decodeControl(const uint8_t* data, size_t size) {
    if (size < kControlHeaderBytes || size > kControlHeaderBytes + kMaxControlBytes ||
        getU16(data + 2) != size - kControlHeaderBytes)
        return std::nullopt;
    return ControlMessage{getU32(data + 4), data + kControlHeaderBytes, size - kControlHeaderBytes};
}

std::optional<Message> decodeFragment(bool isVideo, const uint8_t* data, size_t size) {
    if (size <= kFragmentHeaderBytes)
        return std::nullopt;
    FrameFragment fragment;
    fragment.isVideo = isVideo;
    fragment.index = getU16(data + 2);
    fragment.count = getU16(data + 4);
    fragment.number = getU32(data + 8);
    fragment.totalBytes = getU32(data + 12);
    std::copy(data + 16, data + kFragmentHeaderBytes, fragment.info.begin());
    fragment.data = data + kFragmentHeaderBytes;
    fragment.size = size - kFragmentHeaderBytes;

    const uint32_t limit = isVideo ? kMaxVideoFrameBytes : kMaxAudioFrameBytes;
    if (fragment.totalBytes == 0 || fragment.totalBytes > limit ||
        fragment.count != fragmentCount(fragment.totalBytes) || fragment.index >= fragment.count ||
        fragment.size != fragmentBytes(fragment.totalBytes, fragment.index))
        return std::nullopt;
    return fragment;
}

}  // namespace

uint16_t fragmentCount(size_t totalBytes) {
    return static_cast<uint16_t>((totalBytes + kFragmentPayloadBytes - 1) / kFragmentPayloadBytes);
}

size_t fragmentBytes(size_t totalBytes, uint16_t index) {
    return std::min(kFragmentPayloadBytes, totalBytes - index * kFragmentPayloadBytes);
}

EncodedMessage encodeMessage(const Message& message) {
    return std::visit(Encoder{}, message);
}

std::optional<Message> decodeMessage(const uint8_t* data, size_t size) {
    if (size < kShortBytes || size > kMaxMessageBytes)
        return std::nullopt;
    const Kind kind{data[0]};
    switch (kind) {
        case Kind::Hello:
        case Kind::Welcome:
            if (size != kShortBytes)
                return std::nullopt;
            if (kind == Kind::Hello)
                return HelloMessage{data[1]};
            return WelcomeMessage{data[1]};
        case Kind::Ping:
        case Kind::Pong:
        case Kind::Bye:
            if (size != kTokenBytes)
                return std::nullopt;
            if (kind == Kind::Ping)
                return PingMessage{getU32(data + 4)};
            if (kind == Kind::Pong)
                return PongMessage{getU32(data + 4)};
            return ByeMessage{static_cast<int32_t>(getU32(data + 4))};
        case Kind::Control:
            return decodeControl(data, size);
        case Kind::Video:
        case Kind::Audio:
            return decodeFragment(kind == Kind::Video, data, size);
    }
    return std::nullopt;
}

}  // namespace orvelle
