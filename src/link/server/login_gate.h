#pragma once

#include "link/server/attempt_ledger.h"
#include "link/wire/login.h"

#include <list>
#include <map>

namespace orvelle {

/// The camera's side of logins: answers the datagrams that strangers and clients send to its port.
///
///     HELLO without cookie -> COOKIE            nothing is kept or computed
///     HELLO with cookie    -> WELCOME           budget of the address; one exchange is kept
///     PROOF, right         -> READY             the session is admitted
///     PROOF, wrong         -> REFUSED           counted against the address
///
/// It sends nothing itself and knows no clock, so that tests can be its network. One thread.
class LoginGate {
public:
    /// Who lets a session in once its client has proved the password.
    class Host {
    public:
        struct Admission {
            int result = 0;     ///< a code to refuse it with
            uint16_t port = 0;  ///< where the peer's sockets are awaited; 0: where it logged in
        };
        virtual ~Host() = default;
        /// `way`: names the peer from now on.
        virtual Admission admit(uint64_t token, const SecretKey& secret, const sockaddr_in& peer,
                                uint64_t way) = 0;
        /// The peer that a way named lately.
        virtual std::optional<sockaddr_in> peerOf(uint64_t way) const = 0;
    };

    static constexpr size_t kMaxExchanges = 256;

    /// `generator`: of the password, in the context of UID and account.
    LoginGate(std::string uid, std::string account, const CpaceGenerator& generator, Host& host);

    /// What to send back to whom; nothing for what deserves no answer.
    struct Answer {
        Bytes bytes;
        sockaddr_in to{};
    };
    std::optional<Answer> handle(const uint8_t* data, size_t size, const sockaddr_in& from,
                                 int64_t nowMs);

    /// Forgets exchanges that were not finished in time.
    void expire(int64_t nowMs);
    std::optional<std::string> nextLogLine(int64_t nowMs) { return m_ledger.nextLogLine(nowMs); }
    size_t exchanges() const { return m_exchanges.size(); }

private:
    /// From WELCOME on; kept for a while, since READY or REFUSED may have to be repeated.
    struct Exchange {
        Bytes hello;         ///< associated data and share: what a repetition must equal
        sockaddr_in from{};  ///< of the client's login socket
        LoginWelcome welcome;
        std::optional<LoginKeys> keys;
        std::optional<LoginReady> ready;
        bool isCounted = false;  ///< as a wrong password
        int64_t untilMs = 0;
    };
    using Exchanges = std::list<std::pair<uint64_t, Exchange>>;  ///< by token, oldest first

    std::optional<Bytes> answerHello(const LoginHello& hello, const sockaddr_in& from,
                                     int64_t nowMs);
    std::optional<Bytes> beginExchange(const LoginHello& hello, const sockaddr_in& from,
                                       int64_t nowMs);
    std::optional<Answer> answerProof(const LoginProof& proof, const sockaddr_in& from,
                                      int64_t nowMs);
    Answer refuseProof(Exchange& exchange, uint64_t token, int64_t nowMs);
    std::optional<sockaddr_in> peerOf(const LoginProof& proof, const sockaddr_in& from) const;
    Bytes finishExchange(Exchange& exchange, const LoginProof& proof, const sockaddr_in& peer,
                         int64_t nowMs);
    Cookie cookieOf(const SecretKey& key, const LoginHello& hello, const sockaddr_in& from) const;
    bool hasGoodCookie(const LoginHello& hello, const sockaddr_in& from) const;
    void renewCookieKey(int64_t nowMs);
    void forget(std::map<uint64_t, Exchanges::iterator>::iterator exchange);

    // Fixed after construction.
    const std::string m_uid;
    const std::string m_account;
    const CpaceGenerator m_generator;
    Host& m_host;

    AttemptLedger m_ledger;
    SecretKey m_cookieKey;
    SecretKey m_formerCookieKey;
    int64_t m_cookieKeyUntilMs = 0;
    Exchanges m_exchanges;
    std::map<uint64_t, Exchanges::iterator> m_byToken;
};

}  // namespace orvelle
