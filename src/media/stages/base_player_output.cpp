#include "media/stages/base_player_output.h"

KvBasePlayerOutput::KvBasePlayerOutput(QObject* parent) : QObject(parent) {}

void KvBasePlayerOutput::setCallback(void* user, EventCallback callback) {
    m_user = user;
    m_callback = callback;
}

void KvBasePlayerOutput::notify(int32_t event) {
    if (m_callback)
        m_callback(m_user, event);
}
