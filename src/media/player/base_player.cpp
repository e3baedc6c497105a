#include "media/player/base_player.h"

#include "media/recording/player_recorder.h"
#include "media/stages/base_player_decoder.h"
#include "media/stages/base_player_input.h"
#include "media/stages/base_player_output.h"

KvBasePlayer::KvBasePlayer(QObject* parent)
    : QObject(parent), m_stats(std::make_shared<orvelle::StreamStats>()) {}

KvBasePlayer::~KvBasePlayer() = default;

int KvBasePlayer::speed() {
    return m_input ? m_input->speed() : 0;
}

void KvBasePlayer::followSound() {
    if (m_input)
        m_input->setSoundWanted(m_recorder || isSoundHeard());
}

std::unique_ptr<KvBasePlayerInput> KvBasePlayer::takeInput() {
    return std::move(m_input);
}

int KvBasePlayer::start() {
    followSound();
    if (m_input)
        m_input->open();
    if (m_decoder)
        m_decoder->start();
    if (m_output)
        m_output->start();
    return 0;
}

void KvBasePlayer::requestStop() {
    // Against the flow, so that no stage takes its neighbour's end for the end of the stream.
    if (m_output)
        m_output->requestStop();
    if (m_decoder)
        m_decoder->requestStop();
    if (m_input)
        m_input->requestStop();
    if (m_recorder)
        m_recorder->requestStop();
}

void KvBasePlayer::stop() {
    requestStop();
    stopRecord();
    if (m_output)
        m_output->stop();
    if (m_decoder)
        m_decoder->stop();
    if (m_input)
        m_input->close();
}

int KvBasePlayer::resume() {
    if (m_input)
        m_input->resume();
    if (m_decoder && !m_decoder->isRunning()) {
        m_decoder->start();
        if (m_input)
            m_input->learnSound();
    }
    if (m_output && !m_output->isRunning())
        m_output->start();
    return 0;
}

void KvBasePlayer::pause() {
    if (m_output)
        m_output->stop();
    if (m_decoder)
        m_decoder->stop();
    if (m_input)
        m_input->pause();
}

void KvBasePlayer::seek(double seconds) {
    if (m_input)
        m_input->seek(seconds);
}

void KvBasePlayer::flush() {
    if (m_input)
        m_input->flush();
    if (m_decoder)
        m_decoder->flush();
    if (m_output)
        m_output->flush();
}

int KvBasePlayer::open() {
    stop();
    close();
    m_stats = std::make_shared<orvelle::StreamStats>();
    const int results[] = {openInput(), openDecoder(), openOutput()};
    for (const int result : results) {
        if (result < 0) {
            stop();
            return -1;
        }
    }
    linkStages();
    return 0;
}

void KvBasePlayer::linkStages() {
    m_input->setCallback(this, onInputEvent);
    m_decoder->setCallback(this, [](void*, int32_t) {});
    m_output->setCallback(this, onOutputEvent);
    m_decoder->setInput(m_input.get());
    m_output->setDecoder(m_decoder.get());
    m_input->setStats(m_stats);
    m_decoder->setStats(m_stats);
    m_output->setStats(m_stats);
}

void KvBasePlayer::close() {
    closeOutput();
    closeDecoder();
    closeInput();
}

int KvBasePlayer::startRecord(const QString& path, const QString& formatName, double limitSeconds) {
    stopRecord();
    m_recorder = std::make_unique<KvPlayerRecorder>(m_input.get(), m_decoder.get());
    m_recorder->setCallback(m_recordUser, m_recordCallback);
    m_recorder->configure(path, formatName, limitSeconds);
    const int result = m_recorder->start();
    if (result < 0)
        m_recorder.reset();
    followSound();
    return result;
}

void KvBasePlayer::stopRecord() {
    if (!m_recorder)
        return;
    m_recorder->stop();
    m_recorder.reset();
    followSound();
}

std::unique_ptr<KvPlayerRecorder> KvBasePlayer::releaseRecord() {
    std::unique_ptr<KvPlayerRecorder> released = std::move(m_recorder);
    if (released) {
        released->release();
        followSound();
    }
    return released;
}

double KvBasePlayer::recordLeadSec() const {
    return m_input ? m_input->keptSec() : 0.0;
}

bool KvBasePlayer::isRecording() {
    return m_recorder && m_recorder->isRecording();
}

bool KvBasePlayer::isInputRunning() {
    return m_input && m_input->isRunning();
}

bool KvBasePlayer::isRunning() {
    return m_decoder && m_decoder->isRunning() && m_output && m_output->isRunning();
}

double KvBasePlayer::outputTime() {
    return m_output ? m_output->videoTime() : 0.0;
}

double KvBasePlayer::duration() {
    return m_input ? m_input->duration() : 0.0;
}

int KvBasePlayer::openInput() {
    m_input = createInput();
    return m_input ? 0 : -1;
}

int KvBasePlayer::openDecoder() {
    m_decoder = createDecoder();
    return m_decoder ? 0 : -1;
}

int KvBasePlayer::openOutput() {
    m_output = createOutput();
    return m_output ? 0 : -1;
}

void KvBasePlayer::closeInput() {
    releaseInput();
}

void KvBasePlayer::closeDecoder() {
    releaseDecoder();
}

void KvBasePlayer::closeOutput() {
    releaseOutput();
}

void KvBasePlayer::releaseInput() {
    m_input.reset();
}

void KvBasePlayer::releaseDecoder() {
    m_decoder.reset();
}

void KvBasePlayer::releaseOutput() {
    m_output.reset();
}

void KvBasePlayer::setCallback(void* user, EventCallback callback) {
    m_user = user;
    m_callback = callback;
}

void KvBasePlayer::setRecordCallback(void* user, EventCallback callback) {
    m_recordUser = user;
    m_recordCallback = callback;
}

void KvBasePlayer::notify(int32_t event, double a, double b) {
    if (m_callback)
        m_callback(m_user, event, a, b);
}

void KvBasePlayer::onInputEvent(void* user, int32_t event) {
    static_cast<KvBasePlayer*>(user)->handleInputEvent(event);
}

void KvBasePlayer::onOutputEvent(void* user, int32_t event) {
    static_cast<KvBasePlayer*>(user)->handleOutputEvent(event);
}

void KvBasePlayer::handleInputEvent(int32_t event) {
    switch (event) {
        case KvBasePlayerInput::kUnusable:
        case KvBasePlayerInput::kLost:
            notify(KvBasePlayerOpenFailed, 0.0, 0.0);
            break;
        case KvBasePlayerInput::kFlushed:
        case KvBasePlayerInput::kRepositioned:
            m_decoder->flush();
            m_output->flush();
            break;
        default:
            break;
    }
}

void KvBasePlayer::handleOutputEvent(int32_t event) {
    switch (event) {
        case KvBasePlayerOutput::kFirstPicture:
            notify(KvBasePlayerFirstFrame, 0.0, 0.0);
            break;
        case KvBasePlayerOutput::kPicturesEnded:
            notify(KvBasePlayerVideoEnded, 0.0, 0.0);
            break;
        case KvBasePlayerOutput::kStopped:
            notify(KvBasePlayerPlayEnded, 0.0, 0.0);
            break;
        case KvBasePlayerOutput::kDry:
        case KvBasePlayerOutput::kGoesOn:
            notify(KvBasePlayerWaiting, event == KvBasePlayerOutput::kDry ? 1.0 : 0.0, -1.0);
            break;
        case KvBasePlayerOutput::kPicture: {
            const double length = duration();
            notify(KvBasePlayerProgress, outputTime(), length);
            break;
        }
        default:
            break;
    }
}
