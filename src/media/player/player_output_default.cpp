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
    // Without a sound device the picture plays all the same.
    m_pcm->start();
    return KvPlayerOutput::start();
}

void KvPlayerOutputDefault::requestStop() {
    // Before the flags, since a write may be blocked on a full device.
    m_pcm->interrupt();
    KvPlayerOutput::requestStop();
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
