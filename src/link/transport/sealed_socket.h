#pragma once

#include "link/crypto/key_schedule.h"
#include "link/crypto/sealing.h"
#include "link/transport/srt_socket.h"

#include <mutex>

namespace orvelle {

/// A connected socket on which both ends have proved themselves: every message on it is sealed.
class SealedSocket {
public:
    SealedSocket(SrtSocket socket, const SecretKey& sendKey, const SecretKey& receiveKey);

    /// Stays the same after close(), when all calls fail.
    SRTSOCKET id() const { return m_id; }

    /// Reliable and in order; never blocks. Any thread.
    SendResult send(const EncodedMessage& message);

    enum class Received {
        Opened,   ///< `*message` was opened
        Nothing,  ///< none waits
        Broken,   ///< the transport gave the connection up
        Forged,   ///< not the peer's next message; the socket is of no more use
    };
    /// One thread.
    Received receive(EncodedMessage* message);

    /// Any thread.
    void close();

private:
    const SRTSOCKET m_id;

    Opener m_opener;  ///< owned by the receiving thread

    std::mutex m_mutex;  ///< guards the fields below, so that numbers go out in order
    SrtSocket m_socket;
    Sealer m_sealer;
};

}  // namespace orvelle
