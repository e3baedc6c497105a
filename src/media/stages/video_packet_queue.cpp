#include "media/stages/video_packet_queue.h"

namespace orvelle {

bool VideoPacketQueue::offer(std::unique_ptr<KvBasePlayerInputPacket> packet) {
    std::lock_guard<std::mutex> lock(m_gateMutex);
    if (m_awaitKey && !packet->isKey())
        return false;
    m_awaitKey = false;
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
    m_awaitKey = true;
    while (take()) {
    }
}

}  // namespace orvelle
