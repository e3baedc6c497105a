#include "media/stages/video_packet_queue.h"

namespace orvelle {

bool VideoPacketQueue::offer(std::unique_ptr<KvBasePlayerInputPacket> packet) {
    std::lock_guard<std::mutex> lock(m_gateMutex);
    if (m_wasCleared)
        m_damage.begin(packet->time());
    m_wasCleared = false;
    if (packet->isKey())
        m_damage.end();
    if (m_damage.covers(packet->time()))
        return false;
    m_bytes += packet->packet()->size;
    put(std::move(packet));
    return true;
}

void* VideoPacketQueue::pop() {
    void* const item = MutexQueue::pop();
    if (item)
        m_bytes -= static_cast<KvBasePlayerInputPacket*>(item)->packet()->size;
    return item;
}

void VideoPacketQueue::clear() {
    std::lock_guard<std::mutex> lock(m_gateMutex);
    m_wasCleared = true;
    while (take()) {
    }
}

}  // namespace orvelle
