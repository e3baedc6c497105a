#include "update/minisign.h"

#include <QList>

#include <algorithm>

#include <sodium.h>

namespace orvelle {

namespace {

constexpr int kAlgorithmBytes = 2;
constexpr int kIdBytes = 8;
constexpr int kHeadBytes = kAlgorithmBytes + kIdBytes;
constexpr int kSignatureBytes = crypto_sign_BYTES;
constexpr int kSumBytes = crypto_generichash_BYTES_MAX;
constexpr char kKeyAlgorithm[] = "Ed";
constexpr char kSumSignedAlgorithm[] = "ED";

/// Nothing unless it is base64 in its one proper form and of that size.
std::optional<QByteArray> decoded(const QByteArray& text, int size) {
    const auto result =
        QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    if (!result || result.decoded.size() != size || result.decoded.toBase64() != text)
        return std::nullopt;
    return result.decoded;
}

/// The four lines of a signature file, or none. Line ends may be those of Windows.
QList<QByteArray> linesOf(QByteArray file) {
    file.replace("\r\n", "\n");
    if (file.endsWith('\n'))
        file.chop(1);
    const QList<QByteArray> lines = file.split('\n');
    const bool isClean = !file.contains('\0') && !file.contains('\r');
    return lines.size() == 4 && isClean ? lines : QList<QByteArray>();
}

const unsigned char* bytesOf(const QByteArray& data, int from = 0) {
    return reinterpret_cast<const unsigned char*>(data.constData()) + from;
}

bool isSigned(const QByteArray& message, const QByteArray& signature, const MinisignKey& key) {
    return crypto_sign_verify_detached(bytesOf(signature), bytesOf(message),
                                       static_cast<unsigned long long>(message.size()),
                                       key.point.data()) == 0;
}

}  // namespace

std::optional<MinisignKey> MinisignKey::fromBase64(const QByteArray& text) {
    const auto bytes = decoded(text, kHeadBytes + crypto_sign_PUBLICKEYBYTES);
    if (!bytes || !bytes->startsWith(kKeyAlgorithm))
        return std::nullopt;
    MinisignKey key;
    std::copy_n(bytesOf(*bytes, kAlgorithmBytes), key.id.size(), key.id.begin());
    std::copy_n(bytesOf(*bytes, kHeadBytes), key.point.size(), key.point.begin());
    return key;
}

std::optional<MinisignSignature> MinisignSignature::parse(const QByteArray& file) {
    static const QByteArray untrusted = "untrusted comment: ";
    static const QByteArray trusted = "trusted comment: ";
    if (file.size() > kMaxFileBytes)
        return std::nullopt;
    const QList<QByteArray> lines = linesOf(file);
    if (lines.isEmpty() || !lines[0].startsWith(untrusted) || !lines[2].startsWith(trusted))
        return std::nullopt;
    const auto ofSum = decoded(lines[1], kHeadBytes + kSignatureBytes);
    const auto ofComment = decoded(lines[3], kSignatureBytes);
    if (!ofSum || !ofSum->startsWith(kSumSignedAlgorithm) || !ofComment)
        return std::nullopt;
    MinisignSignature signature;
    std::copy_n(bytesOf(*ofSum, kAlgorithmBytes), kIdBytes, signature.m_keyId.begin());
    signature.m_ofSum = ofSum->mid(kHeadBytes);
    signature.m_ofComment = *ofComment;
    signature.m_trustedComment = lines[2].mid(trusted.size());
    return signature;
}

bool MinisignSignature::isOf(const QByteArray& name, const QByteArray& blake2b,
                             const MinisignKey& key) const {
    return m_keyId == key.id && blake2b.size() == kSumBytes && isSigned(blake2b, m_ofSum, key) &&
           isSigned(m_ofSum + m_trustedComment, m_ofComment, key) && namesFile(name);
}

bool MinisignSignature::namesFile(const QByteArray& name) const {
    static const QByteArray file = "file:";
    QList<QByteArray> names;
    for (const QByteArray& field : m_trustedComment.split('\t'))
        if (field.startsWith(file))
            names << field.mid(file.size());
    return !name.isEmpty() && names == QList<QByteArray>{name};
}

}  // namespace orvelle
