#include "link/crypto/key_schedule.h"

#include <cstring>

namespace orvelle {

namespace {

SecretKey derive(const uint8_t* key, size_t keyBytes, const char* label, const Bytes& context) {
    SecretKey derived;
    crypto_generichash_state state;
    crypto_generichash_init(&state, key, keyBytes, derived.size());
    // With the final NUL, so that no label and context run into another pair.
    crypto_generichash_update(&state, reinterpret_cast<const uint8_t*>(label),
                              std::strlen(label) + 1);
    crypto_generichash_update(&state, context.data(), context.size());
    crypto_generichash_final(&state, derived.data(), derived.size());
    sodium_memzero(&state, sizeof state);
    return derived;
}

}  // namespace

SecretKey deriveKey(const CpaceKey& from, const char* label) {
    static_assert(CpaceKey::size() <= crypto_generichash_KEYBYTES_MAX);
    return derive(from.data(), from.size(), label, {});
}

SecretKey deriveKey(const SecretKey& from, const char* label, const Bytes& context) {
    return derive(from.data(), from.size(), label, context);
}

Tag authenticate(const SecretKey& key, const uint8_t* data, size_t size) {
    Tag tag;
    crypto_generichash(tag.data(), tag.size(), data, size, key.data(), key.size());
    return tag;
}

bool isAuthentic(const SecretKey& key, const uint8_t* data, size_t size, const Tag& tag) {
    const Tag right = authenticate(key, data, size);
    return sodium_memcmp(right.data(), tag.data(), tag.size()) == 0;
}

SocketKeys socketKeys(const SecretKey& sessionSecret, const Bytes& transcript) {
    const SecretKey socket = deriveKey(sessionSecret, "socket", transcript);
    return {deriveKey(socket, "to camera"), deriveKey(socket, "to client")};
}

}  // namespace orvelle
