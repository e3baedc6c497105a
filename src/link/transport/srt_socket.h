#pragma once

#include "link/wire/wire.h"
#include "platform/ipv4.h"

#include <optional>
#include <string>

#include <srt/srt.h>

/// The few libsrt calls that both ends of the link share, with the settings that hold for it.
namespace orvelle {

/// Keeps libsrt running while it lives; counted by the library.
class SrtLibrary {
public:
    SrtLibrary();
    ~SrtLibrary();
    SrtLibrary(const SrtLibrary&) = delete;
    SrtLibrary& operator=(const SrtLibrary&) = delete;
};

/// Owns one socket and closes it. Numbers of closed sockets are not given out again soon, so a
/// late call on a number fails harmlessly.
class SrtSocket {
public:
    SrtSocket() = default;
    explicit SrtSocket(SRTSOCKET id) : m_id(id) {}
    ~SrtSocket() { close(); }
    SrtSocket(SrtSocket&& other) noexcept : m_id(other.release()) {}
    SrtSocket& operator=(SrtSocket&& other) noexcept;

    SRTSOCKET id() const { return m_id; }
    bool isOpen() const { return m_id != SRT_INVALID_SOCK; }
    SRTSOCKET release();
    void close();

private:
    SRTSOCKET m_id = SRT_INVALID_SOCK;
};

/// Owns one set of polled sockets.
class SrtEpoll {
public:
    SrtEpoll();
    ~SrtEpoll();
    SrtEpoll(const SrtEpoll&) = delete;
    SrtEpoll& operator=(const SrtEpoll&) = delete;

    int id() const { return m_id; }
    /// `events` of SRT_EPOLL_OPT; a socket that is there already changes its events.
    void watch(SRTSOCKET socket, int events);
    void forget(SRTSOCKET socket);

private:
    int m_id;
};

enum class SocketUse {
    Control,
    Media,   ///< a client's: receives frames
    Camera,  ///< a camera's listener, whose callers send little and get much
};

/// A socket with the link's settings, not yet bound; not open when the library refuses one.
SrtSocket createLinkSocket(SocketUse use);

template <class Value>
bool setSocketOption(SRTSOCKET socket, SRT_SOCKOPT option, const Value& value) {
    return srt_setsockflag(socket, option, &value, sizeof value) == 0;
}

enum class SendResult { Sent, Full, Broken };

/// Reliable and in order; never blocks.
SendResult sendBytes(SRTSOCKET socket, const uint8_t* data, size_t size);

constexpr int kNothingReceived = -1;
constexpr int kReceiveBroken = -2;
/// Size of the next message, or one of the above; `room` is at least kMaxDatagramBytes.
int receiveBytes(SRTSOCKET socket, uint8_t* buffer, size_t room);

/// Bytes that the peer has not acknowledged yet.
size_t unsentBytes(SRTSOCKET socket);

/// Data packets that came in so far. Acknowledgements do not count: the transport of a peer that
/// hangs still sends them.
int64_t arrivedPackets(SRTSOCKET socket);

/// Empty unless `host` is a numeric IPv4 address or "localhost".
std::optional<sockaddr_in> ipv4Address(const std::string& host, uint16_t port);
std::string hostText(const sockaddr_in& address);
const sockaddr* asSockaddr(const sockaddr_in& address);

}  // namespace orvelle
