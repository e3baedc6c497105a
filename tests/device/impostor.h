#pragma once

#include <QStringList>

#include <atomic>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "link/environment.h"
#include "link/transport/srt_socket.h"
#include "link/wire/login.h"
#include "link/wire/wire.h"
#include "platform/datagram_socket.h"

namespace orvelle::test {

/// Answers every search for its UIDs without having their passwords: the logins that follow are
/// refused or, with 0 as the reason, left without an answer. It also hears which single cameras the
/// network is asked for.
class Impostor {
public:
    explicit Impostor(const QStringList& uids, int refusal = 0) : m_refusal(refusal) {
        for (const QString& uid : uids)
            m_uids.insert(uid.toStdString());
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(discoveryPort());
        address.sin_addr = loopbackBroadcast();
        if (!m_login.bindExclusively(*ipv4Address("127.0.0.1", 0)) || !m_search.bindShared(address))
            qFatal("the impostor has no ports");
        m_thread = std::thread([this] { run(); });
    }
    ~Impostor() {
        m_isStopped = true;
        m_thread.join();
    }

    std::set<std::string> askedFor() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_askedFor;
    }
    size_t logins() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_tokens.size();
    }

private:
    void run() {
        while (!m_isStopped) {
            DatagramSocket::waitForAny({&m_search, &m_login}, 20);
            uint8_t buffer[256];
            sockaddr_in from{};
            for (int size; (size = m_login.receive(buffer, sizeof buffer, from)) >= 0;)
                refuse(decodeLogin(buffer, static_cast<size_t>(size)), from);
            for (int size; (size = m_search.receive(buffer, sizeof buffer, from)) >= 0;)
                answer(decodeSearchQuery(buffer, static_cast<size_t>(size)), from);
        }
    }
    void refuse(const std::optional<LoginMessage>& message, const sockaddr_in& from) {
        if (!message)
            return;
        const uint64_t token = std::visit([](const auto& m) { return m.token; }, *message);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_tokens.insert(token);
        }
        const Bytes bytes = encodeLogin(LoginRefused{token, m_refusal});
        if (m_refusal != 0)
            m_login.send(bytes.data(), bytes.size(), from);
    }
    void answer(const std::optional<SearchQuery>& query, const sockaddr_in& from) {
        if (!query)
            return;
        if (!query->uid.empty()) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_askedFor.insert(query->uid);
        }
        for (const std::string& uid : m_uids) {
            if (!query->uid.empty() && query->uid != uid)
                continue;
            const auto bytes =
                encodeSearchAnswer({query->nonce, uid, m_login.port(), {}, kProtocolVersion});
            m_search.send(bytes.data(), bytes.size(), from);
        }
    }

    const int m_refusal;
    std::set<std::string> m_uids;
    DatagramSocket m_search;
    DatagramSocket m_login;
    std::atomic<bool> m_isStopped{false};
    mutable std::mutex m_mutex;  ///< guards what follows but the thread
    std::set<uint64_t> m_tokens;
    std::set<std::string> m_askedFor;
    std::thread m_thread;
};

}  // namespace orvelle::test
