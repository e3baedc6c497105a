#pragma once

#include <QByteArray>

#include <array>
#include <optional>

namespace orvelle {

/// Whose signatures are believed: an Ed25519 key and its number, as minisign writes them.
struct MinisignKey {
    /// From the second line of a public key file; nothing for anything else.
    static std::optional<MinisignKey> fromBase64(const QByteArray& text);

    std::array<unsigned char, 8> id{};
    std::array<unsigned char, 32> point{};
};

/// A signature as minisign keeps it beside a file, in "<file>.minisig". It is one over the file's
/// BLAKE2b sum; the older kind, over the file itself, is refused.
class MinisignSignature {
public:
    /// A longer file is no signature.
    static constexpr int kMaxFileBytes = 16 * 1024;

    /// The content of such a file; nothing unless it is one to the last character.
    static std::optional<MinisignSignature> parse(const QByteArray& file);

    /// Whether the key's owner signed, under this name, the file with this sum (BLAKE2b, 64 bytes).
    /// The name is the one in the trusted comment, "file:<name>", which minisign writes by itself.
    bool isOf(const QByteArray& name, const QByteArray& blake2b, const MinisignKey& key) const;

private:
    bool namesFile(const QByteArray& name) const;

    std::array<unsigned char, 8> m_keyId{};
    QByteArray m_ofSum;  ///< 64 bytes, as the next
    QByteArray m_ofComment;
    QByteArray m_trustedComment;
};

}  // namespace orvelle
