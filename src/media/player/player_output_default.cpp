#include "media/player/player_output_default.h"

#include "media/stages/base_player_decoder.h"
#include "render/pcm_player.h"

KvPlayerOutputDefault::KvPlayerOutputDefault(QObject* parent)
    : KvPlayerOutput(parent), m_pcm(new KvPcmPlayer(this)) {
    setSoundPlayer(m_pcm);
}

KvPlayerOutputDefault::~KvPlayerOutputDefault() {
    KvPlayerOutputDefault::stop();
}

int KvPlayerOutputDefault::start() {
    KvPlayerOutputDefault::stop();
    return KvPlayerOutput::start();
}

void KvPlayerOutputDefault::requestStop() {
    // After the flags: a device that is opened meanwhile may be written to again.
    KvPlayerOutput::requestStop();
    m_pcm->interrupt();
}

void KvPlayerOutputDefault::stop() {
    KvPlayerOutputDefault::requestStop();
    KvPlayerOutput::stop();
    m_pcm->stop();
}

void KvPlayerOutputDefault::setVolume(double value) {
    m_pcm->setVolume(static_cast<float>(value));
    if (decoder())
        decoder()->setSoundWanted(!m_pcm->isMuted());
}
