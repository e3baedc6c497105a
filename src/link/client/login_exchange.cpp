#include "link/client/login_exchange.h"

#include "link/result_codes.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr int64_t kFirstRepeatMs = 150;
constexpr int64_t kMaxRepeatMs = 600;
constexpr int64_t kSilenceMs = 3000;
constexpr int64_t kSecondThoughtsMs = 300;
constexpr int kMaxCookies = 4;  // a camera changes its own twice a minute

uint64_t randomToken() {
    uint64_t token = 0;
    randombytes_buf(&token, sizeof token);
    return token;
}

// Anybody may have said it, so only what a login can end with is passed on.
int resultOfRefusal(int reason) {
    switch (reason) {
        case AV_ER_WRONG_VIEWACCorPWD:
        case AV_ER_NO_PERMISSION:
        case LINK_ER_VERSION:
        case LINK_ER_UNKNOWN_UID:
        case LINK_ER_TOO_MANY_ATTEMPTS:
            return reason;
        default:
            return LINK_ER_REFUSED;
    }
}

}  // namespace

LoginExchange::LoginExchange(const LoginIdentity& identity, const sockaddr_in& camera, uint64_t way)
    : m_camera(camera),
      m_way(way),
      m_token(randomToken()),
      m_exchange(CpaceExchange::Role::Initiator, identity.generator) {
    m_hello.token = m_token;
    m_hello.uid = identity.uid;
    m_hello.account = identity.account;
    m_hello.share = m_exchange.share();
    randombytes_buf(m_hello.nonce.data(), m_hello.nonce.size());
}

std::vector<LoginExchange::Outgoing> LoginExchange::due(int64_t nowMs) {
    if (m_startMs < 0)
        m_startMs = nowMs;
    if (nowMs - m_startMs >= kSilenceMs)
        finish(AV_ER_TIMEOUT);
    // Somebody on the path may have said it, so the camera has time to say something else.
    if (m_refusal != 0 && nowMs - m_refusedMs >= kSecondThoughtsMs)
        finish(m_refusal);
    if (m_isDone || nowMs < m_nextSendMs)
        return {};
    m_waitMs = m_nextSendMs == 0 ? kFirstRepeatMs : std::min(m_waitMs * 2, kMaxRepeatMs);
    m_nextSendMs = nowMs + m_waitMs;
    if (!m_keys)
        return {{encodeLogin(m_hello), false}};
    LoginProof proof;
    proof.token = m_token;
    proof.way = m_way;
    sign(proof, *m_keys);
    LoginProof fromSocketPort = proof;
    fromSocketPort.isFromSocketPort = true;
    return {{encodeLogin(fromSocketPort), true}, {encodeLogin(proof), false}};
}

void LoginExchange::handle(const LoginMessage& message, int64_t nowMs) {
    if (m_isDone)
        return;
    if (!m_wasAnswered)
        m_startMs = nowMs;
    m_wasAnswered = true;
    if (const auto* cookie = std::get_if<LoginCookie>(&message))
        handleCookie(*cookie);
    else if (const auto* welcome = std::get_if<LoginWelcome>(&message))
        handleWelcome(*welcome);
    else if (const auto* ready = std::get_if<LoginReady>(&message))
        handleReady(*ready);
    else if (const auto* refused = std::get_if<LoginRefused>(&message))
        handleRefusal(resultOfRefusal(refused->reason), nowMs);
    else if (std::holds_alternative<LoginOfOtherVersion>(message))
        handleRefusal(LINK_ER_VERSION, nowMs);
}

void LoginExchange::handleRefusal(int result, int64_t nowMs) {
    if (m_refusal != 0)
        return;
    m_refusal = result;
    m_refusedMs = nowMs;
}

void LoginExchange::handleCookie(const LoginCookie& cookie) {
    if (m_keys || m_hello.cookie == cookie.cookie || ++m_cookies > kMaxCookies)
        return;
    m_hello.cookie = cookie.cookie;
    sendAtOnce();
}

void LoginExchange::handleWelcome(const LoginWelcome& welcome) {
    if (m_keys)
        return;
    const auto key =
        m_exchange.agree(associatedData(m_hello), {welcome.share, associatedData(welcome)});
    if (!key) {
        finish(LINK_ER_PROTOCOL);
        return;
    }
    m_keys.emplace(*key);
    sendAtOnce();
}

void LoginExchange::handleReady(const LoginReady& ready) {
    // Whoever has another password sends REFUSED; this was changed on its way, and comes again.
    if (!m_keys || !isAuthentic(ready, *m_keys))
        return;
    m_ready = ready;
    finish(0);
}

void LoginExchange::finish(int result) {
    if (m_isDone)
        return;
    m_isDone = true;
    m_result = result;
}

sockaddr_in LoginExchange::socketAddress() const {
    sockaddr_in address = m_camera;
    if (m_ready.port != 0)
        address.sin_port = htons(m_ready.port);
    return address;
}

}  // namespace orvelle
