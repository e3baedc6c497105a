#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "frames/input_packet.h"
#include "frames/mutex_queue.h"
#include "media/stages/damage_span.h"

namespace orvelle {

/// The compressed video between an input and its decoder. What follows after it was cleared builds
/// on what was discarded: it takes nothing for a DamageSpan or until a key frame. Any thread.
class VideoPacketQueue : public OwningQueue<KvBasePlayerInputPacket> {
public:
    /// Queues the packet, or frees it and returns false.
    bool offer(std::unique_ptr<KvBasePlayerInputPacket> packet);
    void* pop() override;
    void clear() override;
    /// What the waiting packets hold.
    int64_t bytes() const { return m_bytes; }

private:
    std::mutex m_gateMutex;  ///< guards the two below and their agreement with the queue's content
    bool m_wasCleared = false;
    DamageSpan m_damage;
    std::atomic<int64_t> m_bytes{0};  ///< orders nothing
};

}  // namespace orvelle
