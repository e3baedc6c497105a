#include "media/device_player.h"

#include "device/device.h"
#include "media/base_player_input.h"

KvDevicePlayer::KvDevicePlayer(QObject* parent) : ViewPlayer(parent) {}

KvDevicePlayer::~KvDevicePlayer() {
    shutdown();
}

std::unique_ptr<KvBasePlayerInput> KvDevicePlayer::createInput() {
    return std::unique_ptr<KvBasePlayerInput>(m_device ? m_device->createInput() : nullptr);
}
