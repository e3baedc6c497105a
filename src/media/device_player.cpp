#include "media/device_player.h"

#include "device/device.h"
#include "media/base_player_input.h"
#include "media/player_decoder.h"
#include "media/player_output_default.h"

KvDevicePlayer::KvDevicePlayer(QObject* parent) : KvBasePlayer(parent) {}

KvDevicePlayer::~KvDevicePlayer() {
    stop();
    KvBasePlayer::close();
}

int KvDevicePlayer::play() {
    if (open() < 0) {
        close();
        return -1;
    }
    m_deviceOutput->setView(m_view);
    m_deviceOutput->setVolume(m_volume);
    return start();
}

void KvDevicePlayer::shutdown() {
    stop();
    close();
}

void KvDevicePlayer::setView(KvVideoView* view) {
    m_view = view;
    if (m_deviceOutput)
        m_deviceOutput->setView(view);
}

void KvDevicePlayer::setVolume(double volume) {
    m_volume = volume;
    if (m_deviceOutput)
        m_deviceOutput->setVolume(volume);
}

std::unique_ptr<KvBasePlayerInput> KvDevicePlayer::createInput() {
    return std::unique_ptr<KvBasePlayerInput>(m_device ? m_device->createInput() : nullptr);
}

std::unique_ptr<KvBasePlayerDecoder> KvDevicePlayer::createDecoder() {
    return std::make_unique<KvPlayerDecoder>();
}

std::unique_ptr<KvBasePlayerOutput> KvDevicePlayer::createOutput() {
    auto output = std::make_unique<KvPlayerOutputDefault>();
    m_deviceOutput = output.get();
    return output;
}

void KvDevicePlayer::releaseOutput() {
    m_deviceOutput = nullptr;
    KvBasePlayer::releaseOutput();
}
