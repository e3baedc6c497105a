#include "link/client/caller_socket.h"

#include "link/result_codes.h"

#include <utility>

namespace orvelle {

namespace {

// Callers judge time themselves; the transport must not give up before them.
constexpr int kTransportTimeoutMs = 24 * 3600 * 1000;

int resultOfGoodbye(int reason) {
    switch (reason) {
        case AV_ER_NO_PERMISSION:
        case LINK_ER_VERSION:
        case LINK_ER_CHANNEL_IN_USE:
            return reason;
        default:
            return LINK_ER_REFUSED;
    }
}

}  // namespace

CallerSocket::CallerSocket(SrtEpoll& epoll, SrtSocket socket, const Settings& settings)
    : m_epoll(epoll),
      m_secret(settings.secret),
      m_open(makeOpen(settings.purpose, settings.channel, settings.token, settings.secret)),
      m_plain(std::move(socket)) {
    if (!setSocketOption(id(), SRTO_CONNTIMEO, kTransportTimeoutMs)) {
        finish(LINK_ER_NETWORK);
        return;
    }
    m_epoll.watch(id(), SRT_EPOLL_OUT | SRT_EPOLL_ERR);
    if (srt_connect(id(), asSockaddr(settings.address), sizeof settings.address) < 0)
        finish(LINK_ER_NETWORK);
}

void CallerSocket::finish(int result) {
    m_epoll.forget(id());
    m_state = State::Done;
    m_result = result;
}

void CallerSocket::advance() {
    switch (m_state) {
        case State::Connecting: {
            const SRT_SOCKSTATUS status = srt_getsockstate(id());
            if (status == SRTS_CONNECTED)
                connected();
            else if (status != SRTS_CONNECTING && status != SRTS_OPENED && status != SRTS_INIT)
                finish(LINK_ER_REFUSED);
            break;
        }
        case State::Opening:
            readOpened();
            break;
        case State::Greeting:
            readAnswer();
            break;
        case State::Done:
            break;
    }
}

void CallerSocket::connected() {
    m_state = State::Opening;
    m_epoll.watch(id(), SRT_EPOLL_IN | SRT_EPOLL_ERR);
    const Bytes bytes = encodeOpen(m_open);
    if (sendBytes(id(), bytes.data(), bytes.size()) != SendResult::Sent)
        finish(LINK_ER_REFUSED);
}

void CallerSocket::readOpened() {
    uint8_t buffer[kMaxDatagramBytes];
    const int size = receiveBytes(id(), buffer, sizeof buffer);
    if (size == kNothingReceived)
        return;
    if (size < 0) {
        finish(LINK_ER_REFUSED);
        return;
    }
    const auto opened = decodeOpened(buffer, static_cast<size_t>(size));
    if (!opened || opened->version != kProtocolVersion || !isAuthentic(*opened, m_open, m_secret)) {
        finish(LINK_ER_PROTOCOL);
        return;
    }
    if (opened->result != 0) {
        finish(resultOfGoodbye(opened->result));
        return;
    }
    const SocketKeys keys = socketKeys(m_secret, m_open, *opened);
    m_sealed = std::make_shared<SealedSocket>(std::move(m_plain), keys.toCamera, keys.toClient);
    m_state = State::Greeting;
    if (m_sealed->send(encodeMessage(HelloMessage{})) != SendResult::Sent)
        finish(LINK_ER_REFUSED);
}

void CallerSocket::readAnswer() {
    EncodedMessage bytes;
    const SealedSocket::Received received = m_sealed->receive(&bytes);
    if (received == SealedSocket::Received::Nothing)
        return;
    if (received == SealedSocket::Received::Broken) {
        finish(LINK_ER_REFUSED);
        return;
    }
    const auto message = received == SealedSocket::Received::Opened
                             ? decodeMessage(bytes.bytes.data(), bytes.size)
                             : std::nullopt;
    if (message && std::holds_alternative<WelcomeMessage>(*message))
        finish(0);
    else if (const auto* bye = message ? std::get_if<ByeMessage>(&*message) : nullptr)
        finish(resultOfGoodbye(bye->reason));
    else
        finish(LINK_ER_PROTOCOL);
}

}  // namespace orvelle
