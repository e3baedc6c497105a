#include "raw_camera.h"

#include <QtTest>

#include "link/passphrase.h"

namespace orvelle::test {

namespace {

constexpr int kPatienceMs = 5000;

}  // namespace

RawCamera::RawCamera(const char* uid, const char* password)
    : m_gate(uid, *derivePassphrase(uid, "admin", password), m_noClients),
      m_listener(createLinkSocket(SocketUse::Media)) {
    sockaddr_in address = *ipv4Address("127.0.0.1", 0);
    int size = sizeof address;
    if (!m_gate.installOn(m_listener.id()) ||
        srt_bind(m_listener.id(), asSockaddr(address), size) < 0 ||
        srt_listen(m_listener.id(), 8) < 0 ||
        srt_getsockname(m_listener.id(), reinterpret_cast<sockaddr*>(&address), &size) < 0)
        qFatal("the raw camera does not start");
    m_port = ntohs(address.sin_port);
}

bool RawCamera::acceptSockets(int count) {
    const size_t wanted = m_callers.size() + size_t(count);
    return QTest::qWaitFor(
        [&] {
            SrtSocket socket(srt_accept(m_listener.id(), nullptr, nullptr));
            if (socket.isOpen()) {
                char id[512] = "";
                int size = sizeof id;
                srt_getsockflag(socket.id(), SRTO_STREAMID, id, &size);
                const auto request = decodeStreamId(std::string(id, size_t(size)));
                m_callers.push_back({request->purpose, std::move(socket)});
            }
            return m_callers.size() == wanted;
        },
        kPatienceMs);
}

bool RawCamera::welcomeAll() {
    for (Caller& caller : m_callers) {
        char buffer[kMaxMessageBytes];
        const bool came = QTest::qWaitFor(
            [&] { return srt_recvmsg(caller.socket.id(), buffer, sizeof buffer) > 0; },
            kPatienceMs);
        if (!came ||
            sendMessage(caller.socket.id(), encodeMessage(WelcomeMessage{})) != SendResult::Sent)
            return false;
    }
    return true;
}

void RawCamera::send(StreamPurpose on, const QByteArray& bytes) {
    for (Caller& caller : m_callers) {
        if (caller.purpose == on)
            srt_sendmsg(caller.socket.id(), bytes.data(), bytes.size(), -1, 1);
    }
}

}  // namespace orvelle::test
