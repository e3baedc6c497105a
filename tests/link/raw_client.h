#pragma once

#include <QtTest>

#include "link/client/local_port.h"
#include "link/client/login_exchange.h"
#include "link/clock.h"
#include "link/transport/sealed_socket.h"
#include "link/wire/socket_opening.h"
#include "link_fixture.h"

namespace orvelle::test {

inline bool setSocketText(SRTSOCKET socket, SRT_SOCKOPT option, const std::string& text) {
    return srt_setsockflag(socket, option, text.data(), static_cast<int>(text.size())) == 0;
}

/// The UDP port that a bound socket uses; 0 for another one.
inline uint16_t localPort(SRTSOCKET socket) {
    sockaddr_in address{};
    int size = sizeof address;
    const bool isKnown = srt_getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    return isKnown ? ntohs(address.sin_port) : uint16_t{0};
}

/// A client that knows the password and goes through a login step by step, so that a test can
/// leave steps out or send what no client should. One thread.
class RawClient {
public:
    explicit RawClient(uint16_t cameraPort, const std::string& password = kPassword,
                       const std::string& uid = kUid)
        : m_identity((startCrypto(), uid), kLinkAccount, password),
          m_exchange(m_identity, *ipv4Address("127.0.0.1", cameraPort), 0) {
        if (!m_port.open(0))
            qFatal("the raw client has no port");
    }

    /// The exchange of proofs; its result.
    int logIn() {
        const bool isOver = QTest::qWaitFor([this] {
            for (const auto& out : m_exchange.due(steadyMilliseconds())) {
                if (out.isFromSocketPort)
                    m_port.send(out.bytes, m_exchange.camera());
                else
                    m_socket.send(out.bytes.data(), out.bytes.size(), m_exchange.camera());
            }
            uint8_t buffer[kMaxDatagramBytes];
            sockaddr_in from{};
            const int size = m_socket.receive(buffer, sizeof buffer, from);
            const auto message = size > 0 ? decodeLogin(buffer, size_t(size)) : std::nullopt;
            if (message)
                m_exchange.handle(*message, steadyMilliseconds());
            return !m_exchange.isPending();
        });
        return isOver ? m_exchange.result() : int{AV_ER_TIMEOUT};
    }

    /// A transport connection, on which nothing was said yet.
    bool connectSocket() {
        m_plain = m_port.makeCaller(SocketUse::Control);
        const sockaddr_in to = m_exchange.socketAddress();
        srt_connect(m_plain.id(), asSockaddr(to), sizeof to);
        return QTest::qWaitFor([this] { return srt_getsockstate(m_plain.id()) == SRTS_CONNECTED; });
    }
    void sendPlain(const Bytes& bytes) { sendBytes(m_plain.id(), bytes.data(), bytes.size()); }
    bool isConnected() const { return srt_getsockstate(id()) == SRTS_CONNECTED; }

    OpenMessage makeOpenFor(SocketPurpose purpose, uint8_t channel) const {
        return makeOpen(purpose, channel, m_exchange.token(), m_exchange.sessionSecret());
    }
    /// Says OPEN; the camera's result, or AV_ER_TIMEOUT without a proof of its own.
    int open(const OpenMessage& request) {
        sendPlain(encodeOpen(request));
        uint8_t buffer[kMaxDatagramBytes];
        int size = 0;
        const bool hasCome = QTest::qWaitFor([&] {
            size = receiveBytes(m_plain.id(), buffer, sizeof buffer);
            return size != kNothingReceived;
        });
        const auto opened = hasCome && size > 0 ? decodeOpened(buffer, size_t(size)) : std::nullopt;
        if (!opened || !isAuthentic(*opened, request, m_exchange.sessionSecret()))
            return AV_ER_TIMEOUT;
        const SocketKeys keys = socketKeys(m_exchange.sessionSecret(), request, *opened);
        m_sealed = std::make_unique<SealedSocket>(std::move(m_plain), keys.toCamera, keys.toClient);
        return opened->result;
    }
    /// All of the above for the control socket.
    bool connect() {
        return logIn() == 0 && connectSocket() && open(makeOpenFor(SocketPurpose::Control, 0)) == 0;
    }

    void send(const QByteArray& bytes) {
        EncodedMessage message;
        message.size = size_t(bytes.size());
        std::copy(bytes.begin(), bytes.end(), message.bytes.begin());
        m_sealed->send(message);
    }
    /// Proves the keys of the socket; whether the camera welcomed it.
    bool hello() {
        m_sealed->send(encodeMessage(HelloMessage{}));
        EncodedMessage answer;
        return QTest::qWaitFor(
            [&] { return m_sealed->receive(&answer) == SealedSocket::Received::Opened; });
    }

    /// The socket that was opened last, to keep it while another one is.
    std::unique_ptr<SealedSocket> takeSealed() { return std::move(m_sealed); }

    SRTSOCKET id() const { return m_sealed ? m_sealed->id() : m_plain.id(); }

private:
    SrtLibrary m_library;
    LocalPort m_port;
    DatagramSocket m_socket;
    LoginIdentity m_identity;
    LoginExchange m_exchange;
    SrtSocket m_plain;
    std::unique_ptr<SealedSocket> m_sealed;
};

}  // namespace orvelle::test
