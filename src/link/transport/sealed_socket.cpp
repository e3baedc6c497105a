#include "link/transport/sealed_socket.h"

#include <utility>

namespace orvelle {

SealedSocket::SealedSocket(SrtSocket socket, const SecretKey& sendKey, const SecretKey& receiveKey)
    : m_id(socket.id()), m_opener(receiveKey), m_socket(std::move(socket)), m_sealer(sendKey) {}

SendResult SealedSocket::send(const EncodedMessage& message) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const SealedMessage sealed = m_sealer.seal(message);
    const SendResult result = sendBytes(m_id, sealed.bytes.data(), sealed.size);
    if (result == SendResult::Sent)
        m_sealer.advance();
    return result;
}

SealedSocket::Received SealedSocket::receive(EncodedMessage* message) {
    uint8_t sealed[kMaxDatagramBytes];
    const int size = receiveBytes(m_id, sealed, sizeof sealed);
    if (size < 0)
        return size == kNothingReceived ? Received::Nothing : Received::Broken;
    return m_opener.open(sealed, static_cast<size_t>(size), message) ? Received::Opened
                                                                     : Received::Forged;
}

void SealedSocket::close() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_socket.close();
}

}  // namespace orvelle
