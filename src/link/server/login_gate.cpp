#include "link/server/login_gate.h"

#include "link/result_codes.h"
#include "link/wire/version_one.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvelle {

namespace {

constexpr int64_t kExchangeMs = 3000;
constexpr int64_t kCookieKeyMs = 30'000;

SecretKey randomKey() {
    SecretKey key;
    randombytes_buf(key.data(), key.size());
    return key;
}

Bytes identity(const LoginHello& hello) {
    Bytes bytes = associatedData(hello);
    bytes.insert(bytes.end(), hello.share.begin(), hello.share.end());
    return bytes;
}

Bytes refusal(uint64_t token, int reason) {
    return encodeLogin(LoginRefused{token, reason});
}

}  // namespace

LoginGate::LoginGate(std::string uid, std::string account, const CpaceGenerator& generator,
                     Host& host)
    : m_uid(std::move(uid)),
      m_account(std::move(account)),
      m_generator(generator),
      m_host(host),
      m_cookieKey(randomKey()),
      m_formerCookieKey(randomKey()) {}

std::optional<LoginGate::Answer> LoginGate::handle(const uint8_t* data, size_t size,
                                                   const sockaddr_in& from, int64_t nowMs) {
    renewCookieKey(nowMs);
    const auto answerTo = [&from](std::optional<Bytes> bytes) {
        return bytes ? std::optional(Answer{std::move(*bytes), from}) : std::nullopt;
    };
    const auto message = decodeLogin(data, size);
    if (!message)
        return answerTo(refusalOfVersionOne(data, size));
    if (const auto* hello = std::get_if<LoginHello>(&*message))
        return answerTo(answerHello(*hello, from, nowMs));
    if (const auto* proof = std::get_if<LoginProof>(&*message))
        return answerProof(*proof, from, nowMs);
    const auto* other = std::get_if<LoginOfOtherVersion>(&*message);
    if (!other || !other->isHello)
        return std::nullopt;
    const Bytes refused = refusal(other->token, LINK_ER_VERSION);
    return size >= refused.size() ? answerTo(refused) : std::nullopt;
}

std::optional<Bytes> LoginGate::answerHello(const LoginHello& hello, const sockaddr_in& from,
                                            int64_t nowMs) {
    if (hello.uid != m_uid)
        return refusal(hello.token, LINK_ER_UNKNOWN_UID);
    if (!hasGoodCookie(hello, from))
        return encodeLogin(LoginCookie{hello.token, cookieOf(m_cookieKey, hello, from)});
    if (hello.account != m_account)
        return refusal(hello.token, AV_ER_WRONG_VIEWACCorPWD);
    const auto known = m_byToken.find(hello.token);
    if (known != m_byToken.end()) {
        const Exchange& exchange = known->second->second;
        const bool isRepeated =
            isSameAddress(exchange.from, from) && exchange.hello == identity(hello);
        return isRepeated ? std::optional(encodeLogin(exchange.welcome)) : std::nullopt;
    }
    switch (m_ledger.judge(from.sin_addr, nowMs)) {
        case AttemptLedger::Verdict::Allowed:
            return beginExchange(hello, from, nowMs);
        case AttemptLedger::Verdict::Delayed:
            return refusal(hello.token, LINK_ER_TOO_MANY_ATTEMPTS);
        case AttemptLedger::Verdict::OverBudget:
            break;  // it asks again
    }
    return std::nullopt;
}

std::optional<Bytes> LoginGate::beginExchange(const LoginHello& hello, const sockaddr_in& from,
                                              int64_t nowMs) {
    const CpaceExchange own(CpaceExchange::Role::Responder, m_generator);
    Exchange exchange;
    exchange.hello = identity(hello);
    exchange.from = from;
    exchange.welcome.token = hello.token;
    exchange.welcome.share = own.share();
    exchange.untilMs = nowMs + kExchangeMs;
    randombytes_buf(exchange.welcome.nonce.data(), exchange.welcome.nonce.size());
    const auto key =
        own.agree(associatedData(exchange.welcome), {hello.share, associatedData(hello)});
    if (!key) {
        m_ledger.noteWrongPassword(from.sin_addr, nowMs);
        return refusal(hello.token, AV_ER_WRONG_VIEWACCorPWD);
    }
    exchange.keys.emplace(*key);
    if (m_exchanges.size() >= kMaxExchanges)
        forget(m_byToken.find(m_exchanges.front().first));
    m_exchanges.emplace_back(hello.token, std::move(exchange));
    m_byToken[hello.token] = std::prev(m_exchanges.end());
    return encodeLogin(m_exchanges.back().second.welcome);
}

std::optional<LoginGate::Answer> LoginGate::answerProof(const LoginProof& proof,
                                                        const sockaddr_in& from, int64_t nowMs) {
    const auto known = m_byToken.find(proof.token);
    if (known == m_byToken.end())
        return std::nullopt;
    Exchange& exchange = known->second->second;
    if (!isSameHost(exchange.from, from))
        return std::nullopt;
    // Exchanges that were begun side by side do not get round the delay: no word about any of them.
    if (!exchange.ready && m_ledger.isDelayed(from.sin_addr, nowMs))
        return Answer{refusal(proof.token, LINK_ER_TOO_MANY_ATTEMPTS), exchange.from};
    if (!isAuthentic(proof, *exchange.keys))
        return exchange.ready ? std::nullopt
                              : std::optional(refuseProof(exchange, proof.token, nowMs));
    if (exchange.ready)
        return Answer{encodeLogin(*exchange.ready), exchange.from};
    const auto peer = peerOf(proof, from);
    if (!peer)
        return std::nullopt;  // the proof from the sockets' port has not come yet
    return Answer{finishExchange(exchange, proof, *peer, nowMs), exchange.from};
}

// The exchange stays, since the proof may have been made up by somebody on the path; one exchange
// tests one password however often it is asked, so it counts once.
LoginGate::Answer LoginGate::refuseProof(Exchange& exchange, uint64_t token, int64_t nowMs) {
    if (!exchange.isCounted)
        m_ledger.noteWrongPassword(exchange.from.sin_addr, nowMs);
    exchange.isCounted = true;
    return {refusal(token, AV_ER_WRONG_VIEWACCorPWD), exchange.from};
}

std::optional<sockaddr_in> LoginGate::peerOf(const LoginProof& proof,
                                             const sockaddr_in& from) const {
    if (proof.isFromSocketPort)
        return from;
    const auto peer = m_host.peerOf(proof.way);
    return peer && isSameHost(*peer, from) ? peer : std::nullopt;
}

Bytes LoginGate::finishExchange(Exchange& exchange, const LoginProof& proof,
                                const sockaddr_in& peer, int64_t nowMs) {
    m_ledger.noteRightPassword(peer.sin_addr);
    const Host::Admission admission =
        m_host.admit(proof.token, exchange.keys->session, peer, proof.way);
    if (admission.result != 0)
        return refusal(proof.token, admission.result);
    LoginReady ready;
    ready.token = proof.token;
    ready.port = admission.port;
    sign(ready, *exchange.keys);
    exchange.ready = ready;
    exchange.untilMs = nowMs + kExchangeMs;
    return encodeLogin(ready);
}

void LoginGate::expire(int64_t nowMs) {
    for (auto it = m_byToken.begin(); it != m_byToken.end();) {
        const auto next = std::next(it);
        if (nowMs >= it->second->second.untilMs)
            forget(it);
        it = next;
    }
}

void LoginGate::forget(std::map<uint64_t, Exchanges::iterator>::iterator exchange) {
    m_exchanges.erase(exchange->second);
    m_byToken.erase(exchange);
}

void LoginGate::renewCookieKey(int64_t nowMs) {
    if (nowMs < m_cookieKeyUntilMs)
        return;
    m_formerCookieKey = m_cookieKey;
    m_cookieKey = randomKey();
    m_cookieKeyUntilMs = nowMs + kCookieKeyMs;
}

Cookie LoginGate::cookieOf(const SecretKey& key, const LoginHello& hello,
                           const sockaddr_in& from) const {
    std::array<uint8_t, sizeof from.sin_addr + sizeof from.sin_port + sizeof hello.token> bound;
    uint8_t* at = bound.data();
    const auto append = [&at](const auto& value) {
        std::memcpy(at, &value, sizeof value);
        at += sizeof value;
    };
    append(from.sin_addr);
    append(from.sin_port);
    append(hello.token);
    Cookie cookie;
    crypto_generichash(cookie.data(), cookie.size(), bound.data(), bound.size(), key.data(),
                       key.size());
    return cookie;
}

bool LoginGate::hasGoodCookie(const LoginHello& hello, const sockaddr_in& from) const {
    const auto isOf = [&](const SecretKey& key) {
        const Cookie right = cookieOf(key, hello, from);
        return sodium_memcmp(right.data(), hello.cookie.data(), right.size()) == 0;
    };
    return isOf(m_cookieKey) || isOf(m_formerCookieKey);
}

}  // namespace orvelle
