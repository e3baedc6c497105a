#pragma once

#include "link/crypto/secret_bytes.h"

#include <optional>
#include <string>
#include <vector>

/// CPace over ristretto255 with SHA-512: both ends of an exchange get the same key exactly when
/// they agree on password, context and everything that was sent. One run lets a stranger test one
/// password, and nothing that was overheard lets him test another. Any thread, after
/// startCrypto().
namespace orvelle {

using Bytes = std::vector<uint8_t>;
using CpaceShare = std::array<uint8_t, crypto_core_ristretto255_BYTES>;
using CpaceKey = SecretBytes<crypto_hash_sha512_BYTES>;

/// Readies the library; false when the system gives no random numbers. Calling it again is free.
bool startCrypto();

/// The parts one after the other, each behind its length.
Bytes withLengths(const std::vector<Bytes>& parts);

/// What a password comes to in a context. It is as secret as the password, but does not tell it.
class CpaceGenerator {
public:
    CpaceGenerator(const std::string& password, const Bytes& context, const Bytes& sid = {});

    const SecretBytes<crypto_core_ristretto255_BYTES>& element() const { return m_element; }
    const Bytes& sid() const { return m_sid; }

private:
    SecretBytes<crypto_core_ristretto255_BYTES> m_element;
    Bytes m_sid;  ///< names the run where both ends know it before; else empty
};

/// What one end sends: its share, and data that both must have seen alike.
struct CpaceMessage {
    CpaceShare share{};
    Bytes associatedData;
};

/// One end of one exchange.
class CpaceExchange {
public:
    enum class Role { Initiator, Responder };

    /// Draws a fresh secret.
    CpaceExchange(Role role, const CpaceGenerator& generator);
    /// With a given secret, whose upper four bits must be 0.
    CpaceExchange(Role role, const CpaceGenerator& generator,
                  const SecretBytes<crypto_core_ristretto255_SCALARBYTES>& secret);

    const CpaceShare& share() const { return m_share; }

    /// The key; nothing when the other's share is no usable element.
    std::optional<CpaceKey> agree(const Bytes& ownData, const CpaceMessage& other) const;

private:
    const Role m_role;
    const Bytes m_sid;
    SecretBytes<crypto_core_ristretto255_SCALARBYTES> m_secret;
    CpaceShare m_share{};
};

}  // namespace orvelle
