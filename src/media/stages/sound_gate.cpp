#include "media/stages/sound_gate.h"

namespace orvelle {

void SoundGate::pictureQueued(double timeSec) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waitingPictures.push_back(timeSec);
}

void SoundGate::pictureTaken() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_waitingPictures.empty())
        return;
    m_takenSec = m_waitingPictures.front();
    m_waitingPictures.pop_front();
    pass();
}

void SoundGate::pictureRefused() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_waitingPictures.empty())
        m_waitingPictures.pop_back();
    pass();
}

bool SoundGate::offer(std::unique_ptr<Packet> sound) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_held.size() >= kMaxHeld)
        return false;
    m_held.push_back(std::move(sound));
    pass();
    return true;
}

void SoundGate::clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_waitingPictures.clear();
    m_held.clear();
}

void SoundGate::pass() {
    while (!m_held.empty() && (m_waitingPictures.empty() || m_held.front()->time() <= m_takenSec)) {
        m_passed.put(std::move(m_held.front()));
        m_held.pop_front();
    }
}

}  // namespace orvelle
