#include "link/wire/socket_opening.h"

#include "link/wire/byte_order.h"
#include "link/wire/wire.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr uint8_t kOpenKind = 'O';
constexpr uint8_t kOpenedKind = 'A';
constexpr size_t kTokenAt = 8;
constexpr size_t kOpenNonceAt = 16;
constexpr size_t kOpenTagAt = kOpenNonceAt + sizeof(Nonce32);
constexpr size_t kOpenBytes = kOpenTagAt + sizeof(Tag);
constexpr size_t kResultAt = 4;
constexpr size_t kOpenedNonceAt = 8;
constexpr size_t kOpenedTagAt = kOpenedNonceAt + sizeof(Nonce32);
constexpr size_t kOpenedBytes = kOpenedTagAt + sizeof(Tag);

template <class Array>
void put(Bytes& out, size_t at, const Array& array) {
    std::copy(array.begin(), array.end(), out.begin() + static_cast<std::ptrdiff_t>(at));
}

SecretKey openingKey(const SecretKey& secret) {
    return deriveKey(secret, "open");
}

SecretKey openedKey(const SecretKey& secret, const OpenMessage& open) {
    return deriveKey(secret, "opened", encodeOpen(open));
}

}  // namespace

Bytes encodeOpen(const OpenMessage& open) {
    Bytes out(kOpenBytes, 0);
    out[0] = kOpenKind;
    out[1] = open.version;
    out[2] = static_cast<uint8_t>(open.purpose);
    out[3] = open.channel;
    putU64(&out[kTokenAt], open.token);
    put(out, kOpenNonceAt, open.nonce);
    put(out, kOpenTagAt, open.tag);
    return out;
}

Bytes encodeOpened(const OpenedMessage& opened) {
    Bytes out(kOpenedBytes, 0);
    out[0] = kOpenedKind;
    out[1] = opened.version;
    putU32(&out[kResultAt], static_cast<uint32_t>(opened.result));
    put(out, kOpenedNonceAt, opened.nonce);
    put(out, kOpenedTagAt, opened.tag);
    return out;
}

std::optional<OpenMessage> decodeOpen(const uint8_t* data, size_t size) {
    if (size != kOpenBytes || data[0] != kOpenKind)
        return std::nullopt;
    OpenMessage open;
    open.version = data[1];
    open.purpose = SocketPurpose{data[2]};
    open.channel = data[3];
    open.token = getU64(data + kTokenAt);
    std::copy_n(data + kOpenNonceAt, open.nonce.size(), open.nonce.begin());
    std::copy_n(data + kOpenTagAt, open.tag.size(), open.tag.begin());
    const bool isKnown =
        open.purpose == SocketPurpose::Control || open.purpose == SocketPurpose::Media;
    const bool isInRange = open.channel < kMaxLinkChannels &&
                           (open.purpose == SocketPurpose::Media || open.channel == 0);
    if (!isKnown || !isInRange)
        return std::nullopt;
    return open;
}

std::optional<OpenedMessage> decodeOpened(const uint8_t* data, size_t size) {
    if (size != kOpenedBytes || data[0] != kOpenedKind)
        return std::nullopt;
    OpenedMessage opened;
    opened.version = data[1];
    opened.result = static_cast<int32_t>(getU32(data + kResultAt));
    std::copy_n(data + kOpenedNonceAt, opened.nonce.size(), opened.nonce.begin());
    std::copy_n(data + kOpenedTagAt, opened.tag.size(), opened.tag.begin());
    return opened;
}

OpenMessage makeOpen(SocketPurpose purpose, uint8_t channel, uint64_t token,
                     const SecretKey& secret) {
    OpenMessage open;
    open.version = kProtocolVersion;
    open.purpose = purpose;
    open.channel = channel;
    open.token = token;
    randombytes_buf(open.nonce.data(), open.nonce.size());
    const Bytes bytes = encodeOpen(open);
    open.tag = authenticate(openingKey(secret), bytes.data(), bytes.size());
    return open;
}

OpenedMessage makeOpened(const OpenMessage& open, int32_t result, const SecretKey& secret) {
    OpenedMessage opened;
    opened.version = kProtocolVersion;
    opened.result = result;
    randombytes_buf(opened.nonce.data(), opened.nonce.size());
    const Bytes bytes = encodeOpened(opened);
    opened.tag = authenticate(openedKey(secret, open), bytes.data(), bytes.size());
    return opened;
}

bool isAuthentic(const OpenMessage& open, const SecretKey& secret) {
    OpenMessage plain = open;
    plain.tag = {};
    const Bytes bytes = encodeOpen(plain);
    return isAuthentic(openingKey(secret), bytes.data(), bytes.size(), open.tag);
}

bool isAuthentic(const OpenedMessage& opened, const OpenMessage& open, const SecretKey& secret) {
    OpenedMessage plain = opened;
    plain.tag = {};
    const Bytes bytes = encodeOpened(plain);
    return isAuthentic(openedKey(secret, open), bytes.data(), bytes.size(), opened.tag);
}

SocketKeys socketKeys(const SecretKey& secret, const OpenMessage& open,
                      const OpenedMessage& opened) {
    Bytes transcript = encodeOpen(open);
    const Bytes answer = encodeOpened(opened);
    transcript.insert(transcript.end(), answer.begin(), answer.end());
    return socketKeys(secret, transcript);
}

}  // namespace orvelle
