#include "media/video_packet_queue.h"

namespace orvelle {

bool VideoPacketQueue::offer(std::unique_ptr<KvBasePlayerInputPacket> packet) {
    std::lock_guard<std::mutex> lock(m_gateMutex);
    if (m_awaitKey && !packet->isKey())
        return false;
    m_awaitKey = false;
    put(std::move(packet));
    return true;
}

void VideoPacketQueue::clear() {
    std::lock_guard<std::mutex> lock(m_gateMutex);
    m_awaitKey = true;
    MutexQueue::clear();
}

}  // namespace orvelle
