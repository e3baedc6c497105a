#include "media/stages/base_player_input.h"

extern "C" {
#include <libavutil/time.h>
}

KvBasePlayerInput::KvBasePlayerInput(QObject* parent) : QObject(parent) {}

void KvBasePlayerInput::setCallback(void* user, EventCallback callback) {
    m_user = user;
    m_callback = callback;
}

void KvBasePlayerInput::notify(int32_t event) {
    if (m_callback)
        m_callback(m_user, event);
}

double KvBasePlayerInput::setPacketCallback(void* user, PacketCallback callback) {
    std::lock_guard<std::mutex> lock(m_packetMutex);
    m_packetUser = user;
    m_packetCallback = callback;
    if (!callback)
        return 0.0;
    for (const auto& packet : m_group.packets())
        callback(user, packet.get());
    return groupAgeSec();
}

void KvBasePlayerInput::deliverPacket(KvBasePlayerInputPacket* packet) {
    const bool isKept = isLive();
    // Called under the lock, so that a recorder that has detached itself may be deleted.
    std::lock_guard<std::mutex> lock(m_packetMutex);
    if (isKept) {
        m_group.add(*packet);
        if (packet->isVideo() && packet->isKey())
            m_groupArrivalUs = av_gettime_relative();
    }
    if (m_packetCallback)
        m_packetCallback(m_packetUser, packet);
}

double KvBasePlayerInput::keptSec() const {
    std::lock_guard<std::mutex> lock(m_packetMutex);
    return groupAgeSec();
}

double KvBasePlayerInput::groupAgeSec() const {
    const int64_t ageUs = av_gettime_relative() - m_groupArrivalUs;
    return m_group.packets().empty() ? 0.0 : static_cast<double>(ageUs) / 1e6;
}
