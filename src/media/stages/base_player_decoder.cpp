#include "media/stages/base_player_decoder.h"

KvBasePlayerDecoder::KvBasePlayerDecoder(QObject* parent) : QObject(parent) {}

void KvBasePlayerDecoder::setCallback(void* user, EventCallback callback) {
    m_user = user;
    m_callback = callback;
}

void KvBasePlayerDecoder::notify(int32_t event) {
    if (m_callback)
        m_callback(m_user, event);
}
