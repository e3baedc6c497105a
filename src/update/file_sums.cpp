#include "update/file_sums.h"

#include "update/update_log.h"

namespace orvelle {

namespace {

unsigned char* bytesOf(QByteArray& data) {
    return reinterpret_cast<unsigned char*>(data.data());
}

}  // namespace

FileSums::FileSums() {
    // Chooses the fastest code for this processor; where it cannot, the sums are as right.
    if (sodium_init() < 0)
        qCInfo(lcUpdate) << "the cryptographic library did not start";
    reset();
}

void FileSums::reset() {
    crypto_hash_sha256_init(&m_sha256);
    crypto_generichash_init(&m_blake2b, nullptr, 0, crypto_generichash_BYTES_MAX);
}

void FileSums::add(const QByteArray& piece) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(piece.constData());
    const auto size = static_cast<unsigned long long>(piece.size());
    crypto_hash_sha256_update(&m_sha256, bytes, size);
    crypto_generichash_update(&m_blake2b, bytes, size);
}

QByteArray FileSums::sha256() const {
    crypto_hash_sha256_state state = m_sha256;
    QByteArray sum(crypto_hash_sha256_BYTES, Qt::Uninitialized);
    crypto_hash_sha256_final(&state, bytesOf(sum));
    return sum;
}

QByteArray FileSums::blake2b() const {
    crypto_generichash_state state = m_blake2b;
    QByteArray sum(crypto_generichash_BYTES_MAX, Qt::Uninitialized);
    crypto_generichash_final(&state, bytesOf(sum), crypto_generichash_BYTES_MAX);
    return sum;
}

}  // namespace orvelle
