#pragma once

#include <QtTest>

#include "link/passphrase.h"
#include "link/server/client_table.h"
#include "link/server/listener_gate.h"
#include "link_fixture.h"

namespace orvelle::test {

/// A listener that lets callers in like a camera and then does only what a test tells it to:
/// nothing, or send bytes that no camera should. One thread.
class RawCamera {
public:
    RawCamera()
        : m_gate(kUid, *derivePassphrase(kUid, "admin", kPassword), m_noClients),
          m_listener(createLinkSocket(SocketUse::Media)) {
        sockaddr_in address = *ipv4Address("127.0.0.1", 0);
        int size = sizeof address;
        m_gate.installOn(m_listener.id());
        srt_bind(m_listener.id(), asSockaddr(address), size);
        if (srt_listen(m_listener.id(), 8) < 0)
            qFatal("the raw camera does not start");
        srt_getsockname(m_listener.id(), reinterpret_cast<sockaddr*>(&address), &size);
        m_port = ntohs(address.sin_port);
    }

    uint16_t port() const { return m_port; }

    /// Waits until both sockets of a login are there; false after 5 s.
    bool acceptLogin() {
        m_callers.clear();
        return QTest::qWaitFor([this] {
            SrtSocket socket(srt_accept(m_listener.id(), nullptr, nullptr));
            if (socket.isOpen())
                m_callers.push_back(std::move(socket));
            return m_callers.size() == 2;
        });
    }

    /// Waits for each caller's HELLO and welcomes it; false after 5 s.
    bool welcome() {
        return std::all_of(m_callers.begin(), m_callers.end(), [](const SrtSocket& socket) {
            char buffer[kMaxMessageBytes];
            return QTest::qWaitFor(
                       [&] { return srt_recvmsg(socket.id(), buffer, sizeof buffer) > 0; }) &&
                   sendMessage(socket.id(), encodeMessage(WelcomeMessage{})) == SendResult::Sent;
        });
    }

    /// On both sockets.
    void send(const QByteArray& bytes) {
        for (const SrtSocket& socket : m_callers)
            srt_sendmsg(socket.id(), bytes.data(), bytes.size(), -1, 1);
    }

private:
    SrtLibrary m_library;
    ClientTable m_noClients;
    ListenerGate m_gate;
    SrtSocket m_listener;
    uint16_t m_port = 0;
    std::vector<SrtSocket> m_callers;
};

}  // namespace orvelle::test
