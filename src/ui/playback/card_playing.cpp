#include "ui/playback/card_playing.h"

#include <utility>

namespace orvelle {

void CardPlaying::begin(int from) {
    m_from = from;
    m_position = from;
    m_interrupted.reset();
    m_state = State::kOpening;
}

void CardPlaying::setPaused(bool paused) {
    // The player finds out anew when it goes on.
    m_dry = false;
    if (isOpening())
        m_state = paused ? State::kOpeningToPause : State::kOpening;
    else if (isOpen())
        m_state = paused ? State::kPaused : State::kPlaying;
}

void CardPlaying::stop() {
    m_firstPicture = false;
    m_ended = false;
    m_openFailed = false;
    m_dry = false;
    m_state = State::kStopped;
}

void CardPlaying::shown() {
    m_state = isPaused() ? State::kPaused : State::kPlaying;
    m_moment = m_from;
}

void CardPlaying::interrupt() {
    if (m_state == State::kPlaying || m_state == State::kOpening)
        m_interrupted = m_state == State::kOpening ? m_from : m_moment;
}

std::optional<int> CardPlaying::takeInterrupted() {
    return std::exchange(m_interrupted, std::nullopt);
}

std::atomic<bool>& CardPlaying::flagOf(News news) {
    switch (news) {
        case News::kFirstPicture:
            return m_firstPicture;
        case News::kEnded:
            return m_ended;
        case News::kDry:
            return m_dry;
        case News::kOpenFailed:
            break;
    }
    return m_openFailed;
}

}  // namespace orvelle
