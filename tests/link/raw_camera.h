#pragma once

#include <QtTest>

#include "link/server/gate_thread.h"
#include "link/transport/sealed_socket.h"
#include "link/wire/socket_opening.h"
#include "link_fixture.h"

namespace orvelle::test {

/// A camera that knows the password and lets clients in, and then does only what a test tells it
/// to: nothing, or send bytes that no camera should. One thread.
class RawCamera {
public:
    RawCamera()
        : m_ports(bound(m_socket)),
          m_search(kUid, "Raw camera", m_socket.port()),
          m_gate(kUid, {kPassword, loginContext(kUid, kLinkAccount)}, m_socket, m_search, m_clients,
                 m_ports, [this](SRTSOCKET listener) { m_listener = listener; }) {
        m_gate.start();
    }
    ~RawCamera() {
        m_gate.stop();
        m_gate.waitForEnd();
    }

    uint16_t port() const { return m_socket.port(); }

    /// Waits until both sockets of a login are there; false after 5 s.
    bool acceptLogin() {
        m_callers.clear();
        m_sealed.clear();
        return QTest::qWaitFor([this] {
            if (m_listener == SRT_INVALID_SOCK)
                return false;
            SrtSocket socket(srt_accept(m_listener, nullptr, nullptr));
            if (socket.isOpen())
                m_callers.push_back(std::move(socket));
            return m_callers.size() == 2;
        });
    }

    /// Opens each socket and welcomes the client on it; false after 5 s.
    bool welcome() {
        for (SrtSocket& socket : m_callers) {
            if (!open(socket))
                return false;
        }
        return true;
    }

    /// On both sockets, sealed as they should be.
    void send(const QByteArray& bytes) {
        EncodedMessage message;
        message.size = size_t(bytes.size());
        std::copy(bytes.begin(), bytes.end(), message.bytes.begin());
        for (const auto& socket : m_sealed)
            socket->send(message);
    }
    /// On both sockets, as they are.
    void sendPlain(const QByteArray& bytes) {
        for (const auto& socket : m_sealed)
            sendBytes(socket->id(), reinterpret_cast<const uint8_t*>(bytes.data()),
                      size_t(bytes.size()));
    }
    /// Closes both without a word.
    void breakOff() { m_sealed.clear(); }

private:
    static sockaddr_in bound(DatagramSocket& socket) {
        sockaddr_in address = *ipv4Address("127.0.0.1", 0);
        if (!startCrypto() || !socket.bindAsGate(address))
            qFatal("the raw camera does not start");
        address.sin_port = htons(socket.port());
        return address;
    }
    bool open(SrtSocket& socket) {
        uint8_t buffer[kMaxDatagramBytes];
        int size = 0;
        if (!QTest::qWaitFor(
                [&] { return (size = receiveBytes(socket.id(), buffer, sizeof buffer)) > 0; }))
            return false;
        const auto request = decodeOpen(buffer, size_t(size));
        const auto session = request ? m_clients.sessionOf(request->token) : std::nullopt;
        if (!session || !isAuthentic(*request, session->secret))
            return false;
        const OpenedMessage opened = makeOpened(*request, 0, session->secret);
        const Bytes answer = encodeOpened(opened);
        sendBytes(socket.id(), answer.data(), answer.size());
        const SocketKeys keys = socketKeys(session->secret, *request, opened);
        m_sealed.push_back(
            std::make_shared<SealedSocket>(std::move(socket), keys.toClient, keys.toCamera));
        EncodedMessage hello;
        return QTest::qWaitFor([&] {
                   return m_sealed.back()->receive(&hello) == SealedSocket::Received::Opened;
               }) &&
               m_sealed.back()->send(encodeMessage(WelcomeMessage{})) == SendResult::Sent;
    }

    SrtLibrary m_library;
    DatagramSocket m_socket;
    ClientTable m_clients;
    PeerPorts m_ports;
    SearchResponder m_search;
    std::atomic<SRTSOCKET> m_listener{SRT_INVALID_SOCK};
    GateThread m_gate;
    std::vector<SrtSocket> m_callers;
    std::vector<std::shared_ptr<SealedSocket>> m_sealed;
};

}  // namespace orvelle::test
