#pragma once

#include "link/transport/srt_socket.h"

namespace orvelle {

/// One socket on its way from the first datagram to the camera's WELCOME. Never blocks: whoever
/// owns it waits on the epoll and calls advance() for each event. One thread.
class CallerSocket {
public:
    struct Settings {
        StreamRequest request;
        std::string passphrase;  ///< empty for a probe, which is always rejected
        sockaddr_in address{};
    };

    /// Starts to connect; `epoll` is borrowed and must outlive this.
    CallerSocket(SrtEpoll& epoll, SrtSocket socket, const Settings& settings);

    SRTSOCKET id() const { return m_socket.id(); }
    void advance();

    bool isPending() const { return m_state == State::Connecting || m_state == State::Greeting; }
    /// 0 once the camera welcomed us, else the code that says why not; a probe that found its
    /// camera gives 0 too. Meaningful when no longer pending.
    int result() const { return m_result; }
    SrtSocket take();

private:
    enum class State { Connecting, Greeting, Done };

    void connected();
    void readAnswer();
    void finish(int result);

    SrtEpoll& m_epoll;
    SrtSocket m_socket;
    State m_state = State::Connecting;
    int m_result = 0;
};

}  // namespace orvelle
