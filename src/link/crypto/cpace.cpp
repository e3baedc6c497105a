#include "link/crypto/cpace.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr char kGeneratorDomain[] = "CPaceRistretto255";
constexpr char kKeyDomain[] = "CPaceRistretto255_ISK";
constexpr size_t kHashBlockBytes = 128;  // of SHA-512

Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

template <class Array>
Bytes bytesOf(const Array& array) {
    return Bytes(array.data(), array.data() + array.size());
}

void appendWithLength(Bytes& to, const Bytes& part) {
    size_t length = part.size();  // LEB128
    for (; length >= 128; length >>= 7)
        to.push_back(static_cast<uint8_t>(length | 128));
    to.push_back(static_cast<uint8_t>(length));
    to.insert(to.end(), part.begin(), part.end());
}

// The password fills the first block of the hash, so that no state from which it could be guessed
// remains when public data are hashed.
size_t paddingBytes(const Bytes& domain, const Bytes& password) {
    const size_t used = withLengths({password}).size() + withLengths({domain}).size() + 1;
    return used < kHashBlockBytes ? kHashBlockBytes - used : 0;
}

SecretBytes<crypto_core_ristretto255_SCALARBYTES> randomScalar() {
    SecretBytes<crypto_core_ristretto255_SCALARBYTES> scalar;
    do {
        randombytes_buf(scalar.data(), scalar.size());
        scalar.data()[scalar.size() - 1] &= 0x0F;
    } while (sodium_is_zero(scalar.data(), scalar.size()));
    return scalar;
}

}  // namespace

bool startCrypto() {
    static const bool isReady = sodium_init() >= 0;
    return isReady;
}

Bytes withLengths(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts)
        appendWithLength(all, part);
    return all;
}

CpaceGenerator::CpaceGenerator(const std::string& password, const Bytes& context, const Bytes& sid)
    : m_sid(sid) {
    const Bytes domain = bytesOf(std::string(kGeneratorDomain));
    Bytes secret = bytesOf(password);
    Bytes text =
        withLengths({domain, secret, Bytes(paddingBytes(domain, secret), 0), context, sid});
    SecretBytes<crypto_hash_sha512_BYTES> hash;
    crypto_hash_sha512(hash.data(), text.data(), text.size());
    crypto_core_ristretto255_from_hash(m_element.data(), hash.data());
    sodium_memzero(secret.data(), secret.size());
    sodium_memzero(text.data(), text.size());
}

CpaceExchange::CpaceExchange(Role role, const CpaceGenerator& generator)
    : CpaceExchange(role, generator, randomScalar()) {}

CpaceExchange::CpaceExchange(Role role, const CpaceGenerator& generator,
                             const SecretBytes<crypto_core_ristretto255_SCALARBYTES>& secret)
    : m_role(role), m_sid(generator.sid()), m_secret(secret) {
    // Fails for the identity only, which no hash comes to; the other end then refuses the share.
    if (crypto_scalarmult_ristretto255(m_share.data(), m_secret.data(),
                                       generator.element().data()) != 0)
        m_share.fill(0);
}

std::optional<CpaceKey> CpaceExchange::agree(const Bytes& ownData,
                                             const CpaceMessage& other) const {
    SecretBytes<crypto_core_ristretto255_BYTES> common;
    if (crypto_scalarmult_ristretto255(common.data(), m_secret.data(), other.share.data()) != 0)
        return std::nullopt;
    const Bytes own = withLengths({bytesOf(m_share), ownData});
    const Bytes others = withLengths({bytesOf(other.share), other.associatedData});
    const bool isFirst = m_role == Role::Initiator;

    Bytes text = withLengths({bytesOf(std::string(kKeyDomain)), m_sid, bytesOf(common)});
    for (const Bytes* side : {isFirst ? &own : &others, isFirst ? &others : &own})
        text.insert(text.end(), side->begin(), side->end());
    CpaceKey key;
    crypto_hash_sha512(key.data(), text.data(), text.size());
    sodium_memzero(text.data(), text.size());
    return key;
}

}  // namespace orvelle
