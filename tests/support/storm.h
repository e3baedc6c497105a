#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "link/client/login_exchange.h"
#include "link/clock.h"
#include "link/environment.h"
#include "link/wire/version_one.h"
#include "link/wire/wire.h"
#include "platform/datagram_socket.h"

namespace orvelle::test {

/// Strangers of this machine that throw datagrams at a camera's port, from addresses of their own
/// (127.0.0.2 and on), on a thread of its own while it lives.
class Storm {
public:
    enum class Kind {
        Handshakes,      ///< of the transport, without a key block
        Noise,           ///< random bytes, and handshakes of them
        WrongShares,     ///< HELLO with the right cookie and UID and a share made up
        Probes,          ///< searches, at the camera's port and at the discovery port
        HalfOpen,        ///< logins that end after WELCOME
        WrongPasswords,  ///< logins to their end
    };
    /// `uid`: of the camera. `sources` sockets, at `hosts` addresses.
    Storm(Kind kind, uint16_t port, const std::string& uid, int perSecond, int sources = 20,
          int hosts = 20)
        : m_kind(kind),
          m_camera(loopback(1, port)),
          m_identity((startCrypto(), uid), kLinkAccount, "guessed wrong"),
          m_perSecond(perSecond) {
        for (int i = 0; i < sources; ++i) {
            m_sources.push_back(std::make_unique<DatagramSocket>());
            m_isUsable =
                m_sources.back()->bindExclusively(loopback(2 + i % hosts, 0)) && m_isUsable;
            m_isUsable = m_sources.back()->allowBroadcast() && m_isUsable;
        }
        m_exchanges.resize(m_sources.size());
        m_thread = std::thread([this] { run(); });
    }
    ~Storm() {
        m_isStopped = true;
        m_thread.join();
    }
    Storm(const Storm&) = delete;
    Storm& operator=(const Storm&) = delete;

    bool isUsable() const { return m_isUsable; }
    int64_t sent() const { return m_sent; }
    /// WELCOMEs that came: exchanges that the camera took up.
    int64_t welcomes() const { return m_welcomes; }
    /// Logins that were let in. There should be none.
    int64_t admitted() const { return m_admitted; }

private:
    static constexpr size_t kMaxHellos = 4000;
    static constexpr int kFreshHelloOneIn = 10;

    struct Hello {
        size_t source;
        LoginHello hello;
    };

    static sockaddr_in loopback(int host, uint16_t port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(0x7F000000u + static_cast<uint32_t>(host));
        address.sin_port = htons(port);
        return address;
    }

    void run() {
        constexpr std::chrono::milliseconds kSlice{5};
        auto next = std::chrono::steady_clock::now();
        int64_t due = 0;  // in thousandths
        while (!m_isStopped) {
            due = std::min<int64_t>(due + int64_t{m_perSecond} * kSlice.count(), 100'000'000);
            for (; due >= 1000; due -= 1000) {
                sendOne(m_turn);
                m_turn = (m_turn + 1) % m_sources.size();
            }
            for (size_t i = 0; i < m_sources.size(); ++i)
                readAll(i);
            next = std::max(next + kSlice, std::chrono::steady_clock::now() - 10 * kSlice);
            std::this_thread::sleep_until(next);
        }
    }

    void sendOne(size_t source) {
        switch (m_kind) {
            case Kind::Handshakes:
                return send(source, handshake());
            case Kind::Noise:
                return send(source, m_random() % 2 == 0 ? noise() : noisyHandshake());
            case Kind::WrongShares:
                return sendWrongShare(source);
            case Kind::Probes: {
                const auto query = encodeSearchQuery({static_cast<uint32_t>(m_random()), ""});
                return send(source, Bytes(query.begin(), query.end()), m_random() % 2 == 0);
            }
            case Kind::HalfOpen:
            case Kind::WrongPasswords:
                return stepExchange(source);
        }
    }

    Bytes handshake() {
        Bytes bytes = versionOneProbe();
        const bool isConclusion = m_random() % 2 == 0;
        if (isConclusion) {
            std::fill_n(bytes.begin() + 36, 4, uint8_t{0xFF});  // request -1
            bytes[19] = 5;
            randombytes_buf(&bytes[44], 4);  // a cookie
        }
        randombytes_buf(&bytes[40], 4);  // its socket
        return bytes;
    }
    Bytes noise() {
        Bytes bytes(1 + m_random() % 1455);
        randombytes_buf(bytes.data(), bytes.size());
        return bytes;
    }
    Bytes noisyHandshake() {
        Bytes bytes = handshake();
        bytes.resize(64 + m_random() % 200);
        randombytes_buf(&bytes[16], bytes.size() - 16);
        return bytes;
    }

    void sendWrongShare(size_t source) {
        if (m_hellos.empty() || m_random() % kFreshHelloOneIn == 0) {
            LoginHello hello;
            randombytes_buf(&hello.token, sizeof hello.token);
            hello.uid = m_identity.uid;
            hello.account = m_identity.account;
            send(source, encodeLogin(hello));
            m_asking[hello.token] = {source, hello};
            if (m_asking.size() > kMaxHellos)
                m_asking.erase(m_asking.begin());
            return;
        }
        Hello& hello = m_hellos[m_random() % m_hellos.size()];
        crypto_core_ristretto255_random(hello.hello.share.data());
        send(hello.source, encodeLogin(hello.hello));
    }

    void stepExchange(size_t source) {
        auto& exchange = m_exchanges[source];
        const bool isSpent = exchange && m_kind == Kind::HalfOpen && m_isWelcomed[source];
        if (!exchange || !exchange->isPending() || isSpent)
            exchange.emplace(m_identity, m_camera, 0);
        m_isWelcomed[source] = false;
        for (const auto& out : exchange->due(steadyMilliseconds()))
            send(source, out.bytes);
    }

    void readAll(size_t source) {
        uint8_t buffer[2048];
        sockaddr_in from{};
        for (int size; (size = m_sources[source]->receive(buffer, sizeof buffer, from)) >= 0;) {
            const auto message = decodeLogin(buffer, static_cast<size_t>(size));
            if (!message)
                continue;
            if (const auto* cookie = std::get_if<LoginCookie>(&*message))
                keep(*cookie);
            if (std::holds_alternative<LoginWelcome>(*message)) {
                ++m_welcomes;
                m_isWelcomed[source] = true;
            }
            if (std::holds_alternative<LoginReady>(*message))
                ++m_admitted;
            auto& exchange = m_exchanges[source];
            const auto token = std::visit([](const auto& m) { return m.token; }, *message);
            if (exchange && exchange->token() == token && !m_isWelcomed[source])
                exchange->handle(*message, steadyMilliseconds());
            else if (exchange && exchange->token() == token && m_kind == Kind::WrongPasswords)
                exchange->handle(*message, steadyMilliseconds());
        }
    }

    void keep(const LoginCookie& cookie) {
        const auto asked = m_asking.find(cookie.token);
        if (asked == m_asking.end())
            return;
        Hello hello = asked->second;
        m_asking.erase(asked);
        hello.hello.cookie = cookie.cookie;
        m_hellos.push_back(hello);
        if (m_hellos.size() > kMaxHellos)
            m_hellos.pop_front();
    }

    void send(size_t source, const Bytes& bytes, bool isToDiscovery = false) {
        const sockaddr_in search = loopback(0x00FFFFFF, discoveryPort());
        if (m_sources[source]->send(bytes.data(), bytes.size(), isToDiscovery ? search : m_camera))
            ++m_sent;
    }

    const Kind m_kind;
    const sockaddr_in m_camera;
    const LoginIdentity m_identity;
    const int m_perSecond;
    bool m_isUsable = true;
    std::atomic<bool> m_isStopped{false};
    std::atomic<int64_t> m_sent{0}, m_welcomes{0}, m_admitted{0};

    // Owned by the thread.
    std::vector<std::unique_ptr<DatagramSocket>> m_sources;
    std::mt19937 m_random{1};
    size_t m_turn = 0;
    std::map<uint64_t, Hello> m_asking;                     ///< by token
    std::deque<Hello> m_hellos;                             ///< with their cookies
    std::vector<std::optional<LoginExchange>> m_exchanges;  ///< by source
    std::map<size_t, bool> m_isWelcomed;                    ///< the same
    std::thread m_thread;                                   ///< uses the above
};

}  // namespace orvelle::test
