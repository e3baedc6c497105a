#include "link/transport/srt_socket.h"

#include <utility>

#include <srt/logging_api.h>

namespace orvelle {

namespace {

// Room for what a slow reader and the repair of losses need; the defaults (12 MB a direction
// and socket) would let a stuck peer hold that much.
constexpr int kControlBufferBytes = 256 * 1024;
constexpr int kMediaBufferBytes = 2 * 1024 * 1024;
// Of the system, shared by all sockets of a port. The library asks for 12 MB: where the machine is
// too slow for what comes, so much waits there that answers are seconds old when they are read.
constexpr int kPortBufferBytes = 1024 * 1024;

}  // namespace

SrtLibrary::SrtLibrary() {
    srt_startup();
    srt_setloglevel(LOG_CRIT);
}

SrtLibrary::~SrtLibrary() {
    srt_cleanup();
}

SrtSocket& SrtSocket::operator=(SrtSocket&& other) noexcept {
    if (this != &other) {
        close();
        m_id = other.release();
    }
    return *this;
}

SRTSOCKET SrtSocket::release() {
    return std::exchange(m_id, SRT_INVALID_SOCK);
}

void SrtSocket::close() {
    if (isOpen())
        srt_close(release());
}

SrtEpoll::SrtEpoll() : m_id(srt_epoll_create()) {
    srt_epoll_set(m_id, SRT_EPOLL_ENABLE_EMPTY);
}

SrtEpoll::~SrtEpoll() {
    srt_epoll_release(m_id);
}

void SrtEpoll::watch(SRTSOCKET socket, int events) {
    srt_epoll_add_usock(m_id, socket, &events);
}

void SrtEpoll::forget(SRTSOCKET socket) {
    srt_epoll_remove_usock(m_id, socket);
}

SrtSocket createLinkSocket(SocketUse use) {
    SrtSocket socket(srt_create_socket());
    if (!socket.isOpen())
        return socket;
    const SRTSOCKET id = socket.id();
    const int sendBytes = use == SocketUse::Camera ? kMediaBufferBytes : kControlBufferBytes;
    const int receiveBytes = use == SocketUse::Media ? kMediaBufferBytes : kControlBufferBytes;
    // The transmission type resets other options, so it comes first. Periodic loss reports are
    // off since with them a lost last packet waits for the next one to be sent. The flight window
    // costs 16 bytes a packet, and more packets than the buffer holds never fly.
    const bool isSet =
        setSocketOption(id, SRTO_TRANSTYPE, int{SRTT_LIVE}) &&
        setSocketOption(id, SRTO_TSBPDMODE, false) && setSocketOption(id, SRTO_TLPKTDROP, false) &&
        setSocketOption(id, SRTO_NAKREPORT, false) &&
        setSocketOption(id, SRTO_PAYLOADSIZE, int{kMaxDatagramBytes}) &&
        setSocketOption(id, SRTO_RCVSYN, false) && setSocketOption(id, SRTO_SNDSYN, false) &&
        setSocketOption(id, SRTO_SNDBUF, sendBytes) &&
        setSocketOption(id, SRTO_RCVBUF, receiveBytes) &&
        setSocketOption(id, SRTO_UDP_RCVBUF, kPortBufferBytes) &&
        setSocketOption(id, SRTO_FC, kMediaBufferBytes / int{kMaxDatagramBytes});
    if (!isSet)
        socket.close();
    return socket;
}

SendResult sendBytes(SRTSOCKET socket, const uint8_t* data, size_t size) {
    const int sent =
        srt_sendmsg(socket, reinterpret_cast<const char*>(data), static_cast<int>(size), -1, 1);
    if (sent >= 0)
        return SendResult::Sent;
    return srt_getlasterror(nullptr) == SRT_EASYNCSND ? SendResult::Full : SendResult::Broken;
}

int receiveBytes(SRTSOCKET socket, uint8_t* buffer, size_t room) {
    const int size = srt_recvmsg(socket, reinterpret_cast<char*>(buffer), static_cast<int>(room));
    if (size >= 0)
        return size;
    return srt_getlasterror(nullptr) == SRT_EASYNCRCV ? kNothingReceived : kReceiveBroken;
}

size_t unsentBytes(SRTSOCKET socket) {
    size_t bytes = 0;
    return srt_getsndbuffer(socket, nullptr, &bytes) < 0 ? 0 : bytes;
}

int64_t arrivedPackets(SRTSOCKET socket) {
    SRT_TRACEBSTATS stats;
    return srt_bistats(socket, &stats, 0, 1) < 0 ? 0 : stats.pktRecvTotal;
}

std::optional<sockaddr_in> ipv4Address(const std::string& host, uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    const std::string numeric = host == "localhost" ? "127.0.0.1" : host;
    if (inet_pton(AF_INET, numeric.c_str(), &address.sin_addr) != 1)
        return std::nullopt;
    return address;
}

std::string hostText(const sockaddr_in& address) {
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    return text;
}

const sockaddr* asSockaddr(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

}  // namespace orvelle
