#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <optional>

#include "frames/input_packet.h"
#include "frames/mutex_queue.h"

namespace orvelle {

/// When the pictures and the sound of a recording are due, in seconds from the moment that was
/// asked for; negative for what only leads to that moment.
///
/// The camera's stamps count where they make sense, rising by at most two seconds from picture to
/// picture. A step that does not counts as a fifteenth of a second, and a gap in the recording is
/// left out that way. Sound waits until the pictures have come as far, and so gets its time by
/// theirs. Any thread.
class PlaybackTimes {
public:
    using Packet = KvBasePlayerInputPacket;

    static constexpr double kUnknownStepSec = 1.0 / 15;
    static constexpr double kLongestStepSec = 2.0;
    /// Of what is beyond, none is kept.
    static constexpr size_t kMaxHeld = 6000;

    /// `askedSec` is the stamp of the moment asked for, where it is known; else the first picture
    /// is that moment.
    PlaybackTimes(OwningQueue<Packet>& passed, std::optional<double> askedSec)
        : m_passed(passed), m_askedSec(askedSec) {}

    /// The time of the next picture, by its stamp. The sound up to it passes.
    double takePicture(double stampSec);
    /// Sound with its stamp as its time. False, and the packet is freed, when too much is held
    /// or waits to be read.
    bool offer(std::unique_ptr<Packet> sound);
    /// No picture comes any more: what is held passes, and what may still come.
    void endPictures();
    /// Forgets what is held.
    void clear();

    /// The moment of the picture with that time, in seconds from the one asked for.
    double positionOf(double timeSec) const;

private:
    struct HeldSound {
        std::unique_ptr<Packet> packet;
        double sinceSec;  ///< time of the last picture when it came
    };
    struct Jump {
        double timeSec;    ///< from this time on
        double offsetSec;  ///< is so much to be added for the position
    };

    void begin(double stampSec);
    void skipTo(double stampSec);
    bool isStale(const HeldSound& sound) const;
    void passUpTo(double stampSec);
    double soundTime(double stampSec, bool isStale);

    OwningQueue<Packet>& m_passed;

    mutable std::mutex m_mutex;  ///< guards what follows
    std::optional<double> m_askedSec;
    bool m_isStampTrusted = false;  ///< the first one fitted the moment asked for
    bool m_hasPicture = false;
    bool m_isOver = false;
    double m_stampSec = 0.0;                ///< of the last picture
    double m_timeSec = 0.0;                 ///< the same
    double m_offsetSec = 0.0;               ///< from a stamp to its time
    std::optional<double> m_soundStampSec;  ///< of the last sound that passed
    double m_soundTimeSec = 0.0;            ///< the same
    std::deque<HeldSound> m_held;
    std::deque<Jump> m_jumps;  ///< the latest ones
};

}  // namespace orvelle
