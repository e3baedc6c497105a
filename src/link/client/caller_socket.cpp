#include "link/client/caller_socket.h"

#include "link/result_codes.h"

#include <utility>

namespace orvelle {

namespace {

// Callers judge time themselves; the transport must not give up before them.
constexpr int kTransportTimeoutMs = 24 * 3600 * 1000;

int resultOfRejection(int reason) {
    switch (reason) {
        case kRejectProbeFound:
            return 0;
        case SRT_REJ_BADSECRET:
        case SRT_REJ_UNSECURE:
        case kRejectAccount:
            return AV_ER_WRONG_VIEWACCorPWD;
        case kRejectUnknownUid:
            return LINK_ER_UNKNOWN_UID;
        case kRejectTooManyClients:
        case SRT_REJ_BACKLOG:
            return AV_ER_NO_PERMISSION;
        case kRejectVersion:
        case SRT_REJ_VERSION:
            return LINK_ER_VERSION;
        case SRT_REJ_TIMEOUT:
            return AV_ER_TIMEOUT;
        default:
            return LINK_ER_REFUSED;
    }
}

// The peer names the reason, so only those that a login can end with are passed on.
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
    : m_epoll(epoll), m_socket(std::move(socket)) {
    const bool isSet = setSocketOption(id(), SRTO_STREAMID, encodeStreamId(settings.request)) &&
                       setSocketOption(id(), SRTO_CONNTIMEO, kTransportTimeoutMs) &&
                       (settings.passphrase.empty() ||
                        setSocketOption(id(), SRTO_PASSPHRASE, settings.passphrase));
    if (!isSet) {
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
    if (m_state == State::Connecting) {
        const SRT_SOCKSTATUS status = srt_getsockstate(id());
        if (status == SRTS_CONNECTED)
            connected();
        else if (status != SRTS_CONNECTING && status != SRTS_OPENED && status != SRTS_INIT)
            finish(resultOfRejection(srt_getrejectreason(id())));
    } else if (m_state == State::Greeting) {
        readAnswer();
    }
}

void CallerSocket::connected() {
    m_state = State::Greeting;
    m_epoll.watch(id(), SRT_EPOLL_IN | SRT_EPOLL_ERR);
    if (sendMessage(id(), encodeMessage(HelloMessage{})) != SendResult::Sent)
        finish(LINK_ER_REFUSED);
}

void CallerSocket::readAnswer() {
    char buffer[kMaxMessageBytes];
    const int size = srt_recvmsg(id(), buffer, sizeof buffer);
    if (size < 0) {
        if (srt_getlasterror(nullptr) != SRT_EASYNCRCV)
            finish(LINK_ER_REFUSED);
        return;
    }
    const auto message =
        decodeMessage(reinterpret_cast<const uint8_t*>(buffer), static_cast<size_t>(size));
    if (!message) {
        finish(LINK_ER_PROTOCOL);
    } else if (const auto* welcome = std::get_if<WelcomeMessage>(&*message)) {
        finish(welcome->version == kProtocolVersion ? 0 : int{LINK_ER_VERSION});
    } else if (const auto* bye = std::get_if<ByeMessage>(&*message)) {
        finish(resultOfGoodbye(bye->reason));
    } else {
        finish(LINK_ER_PROTOCOL);
    }
}

SrtSocket CallerSocket::take() {
    return std::move(m_socket);
}

}  // namespace orvelle
