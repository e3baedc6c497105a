#pragma once

#include <sodium.h>

#include "update/file_sums.h"
#include "update/web_server.h"

namespace orvelle::test {

/// A maintainer with a key of their own, who signs as minisign does.
class Signer {
public:
    Signer() {
        crypto_sign_keypair(bytesOf(m_public), bytesOf(m_secret));
        randombytes_buf(m_id.data(), static_cast<size_t>(m_id.size()));
    }

    QByteArray publicKey() const { return QByteArray("Ed" + m_id + m_public).toBase64(); }

    QByteArray sign(const QByteArray& content, const QByteArray& trustedComment) const {
        FileSums sums;
        sums.add(content);
        const QByteArray ofSum = signatureOf(sums.blake2b());
        return "untrusted comment: test\n" + QByteArray("ED" + m_id + ofSum).toBase64() +
               "\ntrusted comment: " + trustedComment + "\n" +
               signatureOf(ofSum + trustedComment).toBase64() + "\n";
    }

    /// Puts a file and its signature on a server.
    void publish(WebServer& server, const QByteArray& path, const QByteArray& content) const {
        server.give(path, content);
        const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
        server.give(path + ".minisig", sign(content, "timestamp:1\tfile:" + name + "\thashed"));
    }

private:
    static unsigned char* bytesOf(QByteArray& data) {
        return reinterpret_cast<unsigned char*>(data.data());
    }
    QByteArray signatureOf(QByteArray message) const {
        QByteArray signature(crypto_sign_BYTES, '\0');
        QByteArray secret = m_secret;
        crypto_sign_detached(bytesOf(signature), nullptr, bytesOf(message),
                             static_cast<unsigned long long>(message.size()), bytesOf(secret));
        return signature;
    }

    QByteArray m_public{crypto_sign_PUBLICKEYBYTES, '\0'};
    QByteArray m_secret{crypto_sign_SECRETKEYBYTES, '\0'};
    QByteArray m_id{8, '\0'};
};

}  // namespace orvelle::test
