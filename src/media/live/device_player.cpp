#include "media/live/device_player.h"

#include "device/device.h"
#include "media/stages/base_player_decoder.h"
#include "media/stages/base_player_input.h"

KvDevicePlayer::KvDevicePlayer(QObject* parent) : ViewPlayer(parent) {}

KvDevicePlayer::~KvDevicePlayer() {
    shutdown();
}

void KvDevicePlayer::setKeyPicturesOnly(bool isOnly) {
    m_keyPicturesOnly = isOnly;
    if (decoder())
        decoder()->setKeyPicturesOnly(isOnly);
}

std::unique_ptr<KvBasePlayerDecoder> KvDevicePlayer::createDecoder() {
    auto decoder = ViewPlayer::createDecoder();
    decoder->setKeyPicturesOnly(m_keyPicturesOnly);
    return decoder;
}

std::unique_ptr<KvBasePlayerInput> KvDevicePlayer::createInput() {
    return std::unique_ptr<KvBasePlayerInput>(m_device ? m_device->createInput() : nullptr);
}
