#pragma once

#include "link/crypto/cpace.h"

/// The keys that follow from an exchange; docs/protocol.md has the schedule.
namespace orvelle {

constexpr size_t kTagBytes = 32;
using Tag = std::array<uint8_t, kTagBytes>;

/// A key with a job of its own, from one that may have several.
SecretKey deriveKey(const CpaceKey& from, const char* label);
SecretKey deriveKey(const SecretKey& from, const char* label, const Bytes& context = {});

/// Proves knowledge of `key` over some bytes.
Tag authenticate(const SecretKey& key, const uint8_t* data, size_t size);
/// Takes the same time whatever differs.
bool isAuthentic(const SecretKey& key, const uint8_t* data, size_t size, const Tag& tag);

/// The two directions of one socket.
struct SocketKeys {
    SecretKey toCamera;
    SecretKey toClient;
};

/// `transcript`: what both ends sent to open the socket, nonces included.
SocketKeys socketKeys(const SecretKey& sessionSecret, const Bytes& transcript);

}  // namespace orvelle
