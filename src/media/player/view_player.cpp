#include "media/player/view_player.h"

#include "media/player/player_decoder.h"
#include "media/player/player_output_default.h"
#include "media/stages/base_player_input.h"

namespace orvelle {

int ViewPlayer::play() {
    if (open() < 0) {
        close();
        return -1;
    }
    m_viewOutput->setView(m_view);
    m_viewOutput->setVolume(m_volume);
    return start();
}

void ViewPlayer::shutdown() {
    stop();
    close();
}

void ViewPlayer::setView(VideoSurface* view) {
    m_view = view;
    if (m_viewOutput)
        m_viewOutput->setView(view);
}

void ViewPlayer::setVolume(double volume) {
    m_volume = volume;
    if (m_viewOutput)
        m_viewOutput->setVolume(volume);
    followSound();
}

std::unique_ptr<KvBasePlayerDecoder> ViewPlayer::createDecoder() {
    return std::make_unique<KvPlayerDecoder>();
}

std::unique_ptr<KvBasePlayerOutput> ViewPlayer::createOutput() {
    auto output = std::make_unique<KvPlayerOutputDefault>();
    m_viewOutput = output.get();
    return output;
}

void ViewPlayer::releaseOutput() {
    m_viewOutput = nullptr;
    KvBasePlayer::releaseOutput();
}

}  // namespace orvelle
