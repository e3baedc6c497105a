#pragma once

#include "link/limits.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

/// Every byte that the two ends of the link exchange; docs/protocol.md draws the layouts.
///
/// Integers are little-endian. Decoders take bytes from anywhere: they check every length and
/// range, never allocate for a message, and return nothing for what does not fit exactly.
/// Pointers in a decoded message point into the bytes it was decoded from.
namespace orvelle {

constexpr uint8_t kProtocolVersion = 2;
constexpr size_t kMaxDatagramBytes = 1456;  ///< what one datagram of the transport carries
constexpr size_t kMaxMessageBytes = 1440;   ///< the same less the seal
constexpr size_t kFragmentHeaderBytes = 32;
constexpr size_t kFragmentPayloadBytes = kMaxMessageBytes - kFragmentHeaderBytes;

using FrameInfoBytes = std::array<uint8_t, kFrameInfoBytes>;

/// First sealed message of a client on each of its sockets: it proves that the client has the keys.
struct HelloMessage {
    uint8_t version = kProtocolVersion;
};
/// The camera's answer: the socket is in use from now on.
struct WelcomeMessage {
    uint8_t version = kProtocolVersion;
};
struct PingMessage {
    uint32_t token = 0;  ///< comes back in the PongMessage
};
struct PongMessage {
    uint32_t token = 0;
};
/// Last message on a socket; a reason other than 0 is a code of result_codes.h.
struct ByeMessage {
    int32_t reason = 0;
};
struct ControlMessage {
    uint32_t type = 0;
    const uint8_t* data = nullptr;
    size_t size = 0;
};
/// A frame travels as `count` fragments in order, all but the last of kFragmentPayloadBytes.
struct FrameFragment {
    bool isVideo = true;
    uint16_t index = 0;
    uint16_t count = 0;
    uint32_t number = 0;
    uint32_t totalBytes = 0;
    FrameInfoBytes info{};
    const uint8_t* data = nullptr;
    size_t size = 0;
};

using Message = std::variant<HelloMessage, WelcomeMessage, PingMessage, PongMessage, ByeMessage,
                             ControlMessage, FrameFragment>;

struct EncodedMessage {
    std::array<uint8_t, kMaxMessageBytes> bytes;  ///< only the first `size` are meaningful
    size_t size = 0;
};

/// The message must keep to the bounds above; a fragment's count and size follow from its total.
EncodedMessage encodeMessage(const Message& message);
std::optional<Message> decodeMessage(const uint8_t* data, size_t size);

/// How many fragments a frame of `totalBytes` travels in.
uint16_t fragmentCount(size_t totalBytes);
/// Size of fragment `index` of such a frame.
size_t fragmentBytes(size_t totalBytes, uint16_t index);

/// Query and answer of a search; both are kSearchBytes long, so that an answer is never
/// larger than the query that caused it.
constexpr size_t kSearchBytes = 100;
using SearchDatagram = std::array<uint8_t, kSearchBytes>;

struct SearchQuery {
    uint32_t nonce = 0;
    std::string uid;  ///< empty asks every camera
};
struct SearchAnswer {
    uint32_t nonce = 0;  ///< of the query
    std::string uid;
    uint16_t port = 0;
    std::string deviceName;  ///< UTF-8
    uint8_t version = kProtocolVersion;
};

SearchDatagram encodeSearchQuery(const SearchQuery& query);
SearchDatagram encodeSearchAnswer(const SearchAnswer& answer);
std::optional<SearchQuery> decodeSearchQuery(const uint8_t* data, size_t size);
std::optional<SearchAnswer> decodeSearchAnswer(const uint8_t* data, size_t size);

/// 1 to kMaxUidLength ASCII letters and digits.
bool isValidUid(const std::string& uid);

}  // namespace orvelle
