#pragma once

#include "link/crypto/key_schedule.h"
#include "link/limits.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

/// The datagrams of a login, which come before any connection of the transport; docs/protocol.md
/// draws the layouts. Sizes are fixed, and an answer is never longer than what it answers.
/// Decoders take bytes from anywhere.
namespace orvelle {

using Nonce32 = std::array<uint8_t, 32>;
using Cookie = std::array<uint8_t, 16>;

/// Asks for a session. The token names the exchange, and later the session.
struct LoginHello {
    uint64_t token = 0;
    Cookie cookie{};  ///< zeros at first; then the camera's, so that the address is not made up
    Nonce32 nonce{};
    std::string uid;
    std::string account;
    CpaceShare share{};
};
/// The address is real if this comes back.
struct LoginCookie {
    uint64_t token = 0;
    Cookie cookie{};
};
struct LoginWelcome {
    uint64_t token = 0;
    Nonce32 nonce{};
    CpaceShare share{};
};
/// The client's proof. The camera must know the port that the session's sockets will come from:
/// either the proof comes from there, or the port is open already, and then the camera knows it by
/// the name that an earlier proof gave it.
struct LoginProof {
    uint64_t token = 0;
    uint64_t way = 0;  ///< the client's random name for that port; 0 for none
    bool isFromSocketPort = false;
    Tag tag{};
};
/// The camera's proof: its sockets wait for the client at `port`, or, when that is 0, at the port
/// of the login.
struct LoginReady {
    uint64_t token = 0;
    uint16_t port = 0;
    Tag tag{};
};
/// Anybody may say this, so it only ever ends the exchange that it answers.
struct LoginRefused {
    uint64_t token = 0;
    int32_t reason = 0;  ///< a code of result_codes.h
};
/// A datagram of a login in another version.
struct LoginOfOtherVersion {
    uint64_t token = 0;
    bool isHello = false;  ///< the only kind that may be answered
};

using LoginMessage = std::variant<LoginHello, LoginCookie, LoginWelcome, LoginProof, LoginReady,
                                  LoginRefused, LoginOfOtherVersion>;

Bytes encodeLogin(const LoginMessage& message);
std::optional<LoginMessage> decodeLogin(const uint8_t* data, size_t size);

/// What both ends must have seen alike of the first two messages: all but cookie and share.
Bytes associatedData(const LoginHello& hello);
Bytes associatedData(const LoginWelcome& welcome);
/// Who speaks with whom and for what.
Bytes loginContext(const std::string& uid, const std::string& account);

/// The keys of one exchange.
struct LoginKeys {
    explicit LoginKeys(const CpaceKey& exchange);

    SecretKey clientProof;
    SecretKey cameraProof;
    SecretKey session;
};

void sign(LoginProof& proof, const LoginKeys& keys);
void sign(LoginReady& ready, const LoginKeys& keys);
bool isAuthentic(const LoginProof& proof, const LoginKeys& keys);
bool isAuthentic(const LoginReady& ready, const LoginKeys& keys);

}  // namespace orvelle
