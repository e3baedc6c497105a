#pragma once

#include <deque>
#include <memory>
#include <mutex>

#include "frames/input_packet.h"
#include "frames/mutex_queue.h"

namespace orvelle {

/// Lets the sound of a recording on no faster than its pictures are taken, so that both stay in
/// step however fast the camera sends, and also when nobody listens or the pictures pause.
///
/// Times are the camera's. A packet passes into the audio queue when its time is not after that of
/// the last picture taken, or when no picture waits. Any thread.
class SoundGate {
public:
    using Packet = KvBasePlayerInputPacket;

    /// More sound than a minute holds; of what is beyond, none is kept.
    static constexpr size_t kMaxHeld = 6000;

    explicit SoundGate(OwningQueue<Packet>& passed) : m_passed(passed) {}

    /// A picture waits for the decoder; taken in the same order.
    void pictureQueued(double timeSec);
    void pictureTaken();
    /// The last one queued does not wait after all.
    void pictureRefused();
    /// False, and the packet is freed, when too much is held.
    bool offer(std::unique_ptr<Packet> sound);
    /// Forgets what waits.
    void clear();

private:
    void pass();

    OwningQueue<Packet>& m_passed;
    std::mutex m_mutex;  ///< guards what follows
    std::deque<double> m_waitingPictures;
    double m_takenSec = 0.0;
    std::deque<std::unique_ptr<Packet>> m_held;
};

}  // namespace orvelle
