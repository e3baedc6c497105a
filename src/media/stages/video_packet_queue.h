#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "frames/input_packet.h"
#include "frames/mutex_queue.h"

namespace orvelle {

/// The compressed video between an input and its decoder. Once it was cleared it takes nothing
/// but a key frame, since what follows the discarded frames builds on them. Any thread.
class VideoPacketQueue : public OwningQueue<KvBasePlayerInputPacket> {
public:
    /// Queues the packet, or frees it and returns false while a key frame is awaited.
    bool offer(std::unique_ptr<KvBasePlayerInputPacket> packet);
    void* pop() override;
    void clear() override;
    /// What the waiting packets hold.
    int64_t bytes() const { return m_bytes; }

private:
    std::mutex m_gateMutex;  ///< guards m_awaitKey and its agreement with the queue's content
    bool m_awaitKey = false;
    std::atomic<int64_t> m_bytes{0};  ///< orders nothing
};

}  // namespace orvelle
