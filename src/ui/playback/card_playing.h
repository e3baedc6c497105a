#pragma once

#include <QDateTime>
#include <QtMath>

#include <atomic>
#include <optional>

namespace orvelle {

/// Where playing a card stands: one recording at a time, from a moment on. Interface thread, but
/// for what the player's threads tell.
///
///     kStopped --begin--> kOpening <--> kOpeningToPause
///        ^                   |                |            first picture
///        |---- stop ----- kPlaying <------> kPaused
class CardPlaying {
public:
    enum class State {
        kStopped,
        kOpening,         ///< no picture has been shown yet
        kOpeningToPause,  ///< as above; it rests with the first one, as there is nothing to see
        kPlaying,
        kPaused,
    };
    /// What the player's threads tell; kept until it is taken.
    enum class News {
        kFirstPicture,
        kEnded,
        kOpenFailed,
        kDry,  ///< the camera does not send fast enough; until it does
    };

    State state() const { return m_state; }
    bool isOpen() const { return m_state != State::kStopped; }
    bool isOpening() const {
        return m_state == State::kOpening || m_state == State::kOpeningToPause;
    }
    bool isPaused() const { return m_state == State::kPaused || m_state == State::kOpeningToPause; }

    /// `from` is in seconds since 1970, where progress counts from.
    void begin(int from);
    /// The first picture is on the screen.
    void shown();
    /// Nothing for what is stopped.
    void setPaused(bool paused);
    /// The player's threads have ended: what they told is of no interest any more.
    void stop();
    /// Keeps the moment to go on from when the camera, or its card, is back: of what plays, or is
    /// about to; nothing for what is stopped or paused. Before stop().
    void interrupt();
    /// That moment, once; empty for none.
    std::optional<int> takeInterrupted();
    void forgetInterrupted() { m_interrupted.reset(); }
    /// A picture is shown that is `seconds` behind the beginning: its moment.
    int follow(double seconds) {
        m_position = m_from + qFloor(seconds);
        return m_moment = m_from + qRound(seconds);
    }
    /// Seconds since 1970 of the picture on the screen.
    int moment() const { return m_moment; }
    /// The same, of the last whole second that was reached.
    int position() const { return m_position; }
    /// Where it began.
    int from() const { return m_from; }
    /// Whether it waits for more to show.
    bool isDry() const { return m_state == State::kPlaying && m_dry; }

    /// Any thread.
    void tell(News news, bool isSo = true) { flagOf(news) = isSo; }
    /// Whether it was told, once. A signal about it that is still on its way from the recording
    /// before finds nothing.
    bool take(News news) { return flagOf(news).exchange(false); }
    bool isTold(News news) { return flagOf(news); }

private:
    std::atomic<bool>& flagOf(News news);

    State m_state = State::kStopped;
    int m_from = 0;
    int m_moment = 0;
    int m_position = 0;
    std::optional<int> m_interrupted;

    std::atomic<bool> m_firstPicture{false};
    std::atomic<bool> m_ended{false};
    std::atomic<bool> m_openFailed{false};
    std::atomic<bool> m_dry{false};
};

}  // namespace orvelle
