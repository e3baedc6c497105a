#include "media/live/tutk_player.h"

#include "media/card/tutk_playback_input.h"
#include "media/stages/base_player_decoder.h"
#include "media/stages/base_player_output.h"

#include <utility>

using orvelle::PlaybackEnd;

KvTUTKPlayer::KvTUTKPlayer(QObject* parent) : ViewPlayer(parent) {}

KvTUTKPlayer::~KvTUTKPlayer() {
    shutdown();
    m_formerInput.reset();
}

void KvTUTKPlayer::setDevice(KvTUTKDevice* device) {
    m_formerInput.reset();
    m_device = device;
    m_baseMinute.reset();
}

void KvTUTKPlayer::setStartTime(const QDateTime& time) {
    m_startTime = time;
    if (m_playbackInput)
        m_playbackInput->setStartTime(time);
}

void KvTUTKPlayer::setRecordingStart(const QDateTime& time) {
    m_recordingStart = time;
    if (m_playbackInput)
        m_playbackInput->setRecordingStart(time);
}

void KvTUTKPlayer::stop() {
    requestStop();
    stopRecord();
    if (output())
        output()->stop();
    if (decoder())
        decoder()->stop();
}

double KvTUTKPlayer::outputTime() {
    const double seconds = ViewPlayer::outputTime();
    return m_playbackInput ? m_playbackInput->positionOf(seconds) : seconds;
}

PlaybackEnd KvTUTKPlayer::endReason() const {
    return m_playbackInput ? m_playbackInput->endReason() : PlaybackEnd::kNone;
}

void KvTUTKPlayer::pause() {
    if (output())
        output()->stop();
    if (input())
        input()->pause();
}

std::unique_ptr<KvBasePlayerInput> KvTUTKPlayer::createInput() {
    if (!m_device)
        return nullptr;
    auto input = std::make_unique<KvTUTKPlaybackInput>();
    input->setDevice(m_device);
    input->setStartTime(m_startTime);
    input->setRecordingStart(m_recordingStart);
    input->setBaseMinute(m_baseMinute);
    input->setFormer(std::move(m_formerInput));
    m_playbackInput = input.get();
    return input;
}

void KvTUTKPlayer::releaseInput() {
    if (m_playbackInput && m_device && m_playbackInput->baseMinute())
        m_baseMinute = m_playbackInput->baseMinute();
    m_playbackInput = nullptr;
    if (auto input = takeInput())
        m_formerInput = std::move(input);
}
