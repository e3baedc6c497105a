#pragma once

#include "link/server/media_queue.h"
#include "link/server/send_cap.h"
#include "link/transport/sealed_socket.h"

#include <memory>
#include <mutex>

namespace orvelle {

/// One media socket of a client with the frames that wait for it.
///
/// Any thread pushes; the feeder thread feeds the transport and adapts the send cap.
class ServerChannel {
public:
    ServerChannel(std::shared_ptr<SealedSocket> socket, int64_t nominalBitsPerSecond,
                  ServerCounters& counters, MediaQueue::Kind kind);

    SRTSOCKET id() const { return m_socket->id(); }
    /// For a goodbye.
    const std::shared_ptr<SealedSocket>& socket() const { return m_socket; }

    /// False when a recording's channel takes no more now.
    bool pushVideo(const LinkFrameInfo& info, SharedFrame frame, int64_t nowMs);
    bool pushAudio(const LinkFrameInfo& info, SharedFrame frame, int64_t nowMs);
    void skipVideo();
    /// What the client has not acknowledged yet.
    size_t waitingBytes();

    // --- feeder thread ---

    /// Hands over what the transport may hold now; whether something is left waiting.
    bool feed(int64_t nowMs);

private:
    void adapt(int64_t nowMs);
    void applyCap();

    const std::shared_ptr<SealedSocket> m_socket;

    // Owned by the feeder thread.
    SendCap m_cap;
    int64_t m_lastAdaptMs = 0;
    int64_t m_fedBytes = 0;  ///< in messages, since the start
    int64_t m_lastAckedBytes = 0;
    int64_t m_lastSentBytes = 0;
    int64_t m_lastSentPackets = 0;
    int64_t m_lastLostPackets = 0;
    bool m_wasBacklogged = true;  ///< since the last adaptation

    std::mutex m_mutex;  ///< guards m_queue
    MediaQueue m_queue;
};

}  // namespace orvelle
