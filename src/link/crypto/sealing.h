#pragma once

#include "link/crypto/secret_bytes.h"
#include "link/wire/wire.h"

/// Sealing of the messages of one direction of one socket. The number of the message is its nonce
/// and does not travel: the transport delivers in order and once, so a message that was changed,
/// repeated, left out or moved does not open. One thread at a time.
namespace orvelle {

constexpr size_t kSealBytes = crypto_aead_chacha20poly1305_ietf_ABYTES;
constexpr size_t kMaxSealedBytes = kMaxMessageBytes + kSealBytes;
static_assert(kMaxSealedBytes <= kMaxDatagramBytes);

struct SealedMessage {
    std::array<uint8_t, kMaxSealedBytes> bytes;  ///< only the first `size` are meaningful
    size_t size = 0;
};

class Sealer {
public:
    explicit Sealer(const SecretKey& key) : m_key(key) {}

    /// The next message; sealing anew without advance() replaces it.
    SealedMessage seal(const EncodedMessage& message) const;
    /// The message was sent.
    void advance() { ++m_number; }

private:
    const SecretKey m_key;
    uint64_t m_number = 0;
};

class Opener {
public:
    explicit Opener(const SecretKey& key) : m_key(key) {}

    /// False for anything but the next message of the other end; nothing opens any more then.
    bool open(const uint8_t* data, size_t size, EncodedMessage* message);

private:
    const SecretKey m_key;
    uint64_t m_number = 0;
    bool m_isBroken = false;
};

}  // namespace orvelle
