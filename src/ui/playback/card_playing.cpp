#include "ui/playback/card_playing.h"

namespace orvelle {

void CardPlaying::begin(int from) {
    m_from = from;
    m_state = State::kOpening;
}

void CardPlaying::setPaused(bool paused) {
    if (isOpening())
        m_state = paused ? State::kOpeningToPause : State::kOpening;
    else if (isOpen())
        m_state = paused ? State::kPaused : State::kPlaying;
}

void CardPlaying::stop() {
    m_firstPicture = false;
    m_ended = false;
    m_openFailed = false;
    m_state = State::kStopped;
}

std::atomic<bool>& CardPlaying::flagOf(News news) {
    switch (news) {
        case News::kFirstPicture:
            return m_firstPicture;
        case News::kEnded:
            return m_ended;
        case News::kOpenFailed:
            break;
    }
    return m_openFailed;
}

}  // namespace orvelle
