#include "media/base_player_input.h"

KvBasePlayerInput::KvBasePlayerInput(QObject* parent) : QObject(parent) {}

void KvBasePlayerInput::setCallback(void* user, EventCallback callback) {
    m_user = user;
    m_callback = callback;
}

void KvBasePlayerInput::notify(int32_t event) {
    if (m_callback)
        m_callback(m_user, event);
}

void KvBasePlayerInput::setPacketCallback(void* user, PacketCallback callback) {
    std::lock_guard<std::mutex> lock(m_packetMutex);
    m_packetUser = user;
    m_packetCallback = callback;
}

void KvBasePlayerInput::deliverPacket(KvBasePlayerInputPacket* packet) {
    // Called under the lock, so that a recorder that has detached itself may be deleted.
    std::lock_guard<std::mutex> lock(m_packetMutex);
    if (m_packetCallback)
        m_packetCallback(m_packetUser, packet);
}
