#include "link/crypto/sealing.h"

#include "link/wire/byte_order.h"

namespace orvelle {

namespace {

using Nonce = std::array<uint8_t, crypto_aead_chacha20poly1305_ietf_NPUBBYTES>;

Nonce nonceOf(uint64_t number) {
    Nonce nonce{};
    putU64(nonce.data(), number);
    return nonce;
}

}  // namespace

SealedMessage Sealer::seal(const EncodedMessage& message) const {
    SealedMessage sealed;
    unsigned long long size = 0;
    crypto_aead_chacha20poly1305_ietf_encrypt(sealed.bytes.data(), &size, message.bytes.data(),
                                              message.size, nullptr, 0, nullptr,
                                              nonceOf(m_number).data(), m_key.data());
    sealed.size = static_cast<size_t>(size);
    return sealed;
}

bool Opener::open(const uint8_t* data, size_t size, EncodedMessage* message) {
    if (m_isBroken || size < kSealBytes || size > kMaxSealedBytes) {
        m_isBroken = true;
        return false;
    }
    unsigned long long opened = 0;
    m_isBroken = crypto_aead_chacha20poly1305_ietf_decrypt(
                     message->bytes.data(), &opened, nullptr, data, size, nullptr, 0,
                     nonceOf(m_number).data(), m_key.data()) != 0;
    message->size = static_cast<size_t>(opened);
    ++m_number;
    return !m_isBroken;
}

}  // namespace orvelle
