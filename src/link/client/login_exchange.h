#pragma once

#include "link/wire/login.h"
#include "platform/ipv4.h"

#include <optional>
#include <vector>

namespace orvelle {

/// Who wants in: what every exchange of one login shares.
struct LoginIdentity {
    LoginIdentity(const std::string& uidOfCamera, const std::string& accountName,
                  const std::string& password)
        : uid(uidOfCamera),
          account(accountName),
          generator(password, loginContext(uidOfCamera, accountName)) {}

    const std::string uid;
    const std::string account;
    const CpaceGenerator generator;
};

/// The client's side of one login with whoever answers at one address. It believes nothing before
/// READY has proved the password, and tells nothing from which it could be guessed.
///
///     asking --COOKIE--> asking --WELCOME--> proving --READY--> done(0)
///        '-------------'----REFUSED, silence, forgery--------> done(code)
///
/// It sends nothing itself and knows no clock. One thread.
class LoginExchange {
public:
    /// `way`: the client's name for the port of its sockets, 0 for none.
    LoginExchange(const LoginIdentity& identity, const sockaddr_in& camera, uint64_t way);

    uint64_t token() const { return m_token; }
    const sockaddr_in& camera() const { return m_camera; }

    /// What is due now.
    struct Outgoing {
        Bytes bytes;
        bool isFromSocketPort = false;  ///< else from the login's own socket
    };
    std::vector<Outgoing> due(int64_t nowMs);
    /// A message that carries this token.
    void handle(const LoginMessage& message, int64_t nowMs);

    bool isPending() const { return !m_isDone; }
    /// Whether anything has come from there.
    bool wasAnswered() const { return m_wasAnswered; }
    /// 0, or why not: AV_ER_WRONG_VIEWACCorPWD, AV_ER_TIMEOUT, LINK_ER_PROTOCOL, or what the
    /// camera, or somebody in its place, gave as its reason.
    int result() const { return m_result; }

    // With the result 0.
    const SecretKey& sessionSecret() const { return m_keys->session; }
    /// Where the camera waits for the sockets.
    sockaddr_in socketAddress() const;

private:
    void handleCookie(const LoginCookie& cookie);
    void handleWelcome(const LoginWelcome& welcome);
    void handleReady(const LoginReady& ready);
    void handleRefusal(int result, int64_t nowMs);
    void finish(int result);
    void sendAtOnce() { m_nextSendMs = 0; }

    const sockaddr_in m_camera;
    const uint64_t m_way;
    const uint64_t m_token;
    const CpaceExchange m_exchange;
    LoginHello m_hello;
    std::optional<LoginKeys> m_keys;  ///< once proving
    LoginReady m_ready;
    int64_t m_startMs = -1;
    int64_t m_nextSendMs = 0;
    int64_t m_waitMs = 0;
    int m_cookies = 0;
    int m_refusal = 0;  ///< what somebody refused us with
    int64_t m_refusedMs = 0;
    bool m_wasAnswered = false;
    bool m_isDone = false;
    int m_result = 0;
};

}  // namespace orvelle
