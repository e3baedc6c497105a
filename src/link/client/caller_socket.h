#pragma once

#include "link/transport/sealed_socket.h"
#include "link/wire/socket_opening.h"

#include <memory>

namespace orvelle {

/// One socket of a session on its way from the first datagram to the camera's WELCOME. Never
/// blocks: whoever owns it waits on the epoll and calls advance() for each event. One thread.
///
///     connecting --> OPEN sent --OPENED--> HELLO sent, sealed --WELCOME--> done
class CallerSocket {
public:
    struct Settings {
        SocketPurpose purpose = SocketPurpose::Control;
        uint8_t channel = 0;
        sockaddr_in address{};
        uint64_t token = 0;  ///< of the session
        SecretKey secret;    ///< the same
    };

    /// Starts to connect; `epoll` is borrowed and must outlive this.
    CallerSocket(SrtEpoll& epoll, SrtSocket socket, const Settings& settings);

    SRTSOCKET id() const { return m_sealed ? m_sealed->id() : m_plain.id(); }
    void advance();

    bool isPending() const { return m_state != State::Done; }
    /// 0 once the camera welcomed us, else the code that says why not. Meaningful when no longer
    /// pending.
    int result() const { return m_result; }
    std::shared_ptr<SealedSocket> take() { return std::move(m_sealed); }

private:
    enum class State { Connecting, Opening, Greeting, Done };

    void connected();
    void readOpened();
    void readAnswer();
    void finish(int result);

    SrtEpoll& m_epoll;
    const SecretKey m_secret;
    const OpenMessage m_open;
    SrtSocket m_plain;
    std::shared_ptr<SealedSocket> m_sealed;  ///< from OPENED on
    State m_state = State::Connecting;
    int m_result = 0;
};

}  // namespace orvelle
