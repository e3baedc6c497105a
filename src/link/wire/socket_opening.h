#pragma once

#include "link/wire/login.h"

/// The two plain messages that begin each socket of a session: both ends prove that they hold the
/// session's secret, and their nonces give the socket keys of its own. Everything after them is
/// sealed.
namespace orvelle {

enum class SocketPurpose : uint8_t {
    Control = 1,  ///< the control socket of a session
    Media = 2,    ///< frames of one channel of a session
};

/// From the client.
struct OpenMessage {
    uint8_t version = 0;
    SocketPurpose purpose = SocketPurpose::Control;
    uint8_t channel = 0;
    uint64_t token = 0;  ///< of the session
    Nonce32 nonce{};
    Tag tag{};
};
/// From the camera; a result other than 0 is a code of result_codes.h and ends the socket.
struct OpenedMessage {
    uint8_t version = 0;
    int32_t result = 0;
    Nonce32 nonce{};
    Tag tag{};
};

/// With a fresh nonce and the tag that `secret` gives.
OpenMessage makeOpen(SocketPurpose purpose, uint8_t channel, uint64_t token,
                     const SecretKey& secret);
OpenedMessage makeOpened(const OpenMessage& open, int32_t result, const SecretKey& secret);
bool isAuthentic(const OpenMessage& open, const SecretKey& secret);
bool isAuthentic(const OpenedMessage& opened, const OpenMessage& open, const SecretKey& secret);

Bytes encodeOpen(const OpenMessage& open);
Bytes encodeOpened(const OpenedMessage& opened);
/// A message of another version decodes as such; nothing for what does not fit.
std::optional<OpenMessage> decodeOpen(const uint8_t* data, size_t size);
std::optional<OpenedMessage> decodeOpened(const uint8_t* data, size_t size);

SocketKeys socketKeys(const SecretKey& secret, const OpenMessage& open,
                      const OpenedMessage& opened);

}  // namespace orvelle
