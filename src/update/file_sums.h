#pragma once

#include <QByteArray>

#include <sodium.h>

namespace orvelle {

/// The sums by which a file is known, made piece by piece. One thread at a time.
class FileSums {
public:
    FileSums();

    void reset();
    void add(const QByteArray& piece);
    /// 32 bytes, of all that was added so far.
    QByteArray sha256() const;
    /// 64 bytes, as the former.
    QByteArray blake2b() const;

private:
    crypto_hash_sha256_state m_sha256;
    crypto_generichash_state m_blake2b;
};

}  // namespace orvelle
