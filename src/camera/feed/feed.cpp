#include "camera/feed/feed.h"

#include <chrono>

namespace orvelle {

namespace {

size_t indexOf(Medium medium) {
    return static_cast<size_t>(medium);
}

std::chrono::steady_clock::time_point timePoint(int64_t clockUs) {
    return std::chrono::steady_clock::time_point(std::chrono::microseconds(clockUs));
}

}  // namespace

int64_t cameraClockUs() {
    const auto sinceEpoch = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count();
}

int64_t usualBitRate(const FeedFormat& format) {
    return int64_t{format.width} * format.height * format.framesPerSecond / 7;
}

void Feed::addViewer(Medium medium) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++m_viewers[indexOf(medium)];
    }
    m_changed.notify_all();
}

void Feed::removeViewer(Medium medium) {
    std::lock_guard<std::mutex> lock(m_mutex);
    --m_viewers[indexOf(medium)];
}

void Feed::emitFrame(const EncodedFrame& frame) {
    for (FrameSink* sink : m_sinks)
        sink->frameReady(frame);
}

bool Feed::isWanted(Medium medium) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_viewers[indexOf(medium)] > 0;
}

bool Feed::waitForViewer(Medium medium) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [&] { return m_interrupted || m_viewers[indexOf(medium)] > 0; });
    return !m_interrupted;
}

bool Feed::waitUntil(int64_t timeUs) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_until(lock, timePoint(timeUs), [this] { return m_interrupted; });
    return !m_interrupted;
}

void Feed::interruptWaits() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_interrupted = true;
    }
    m_changed.notify_all();
}

bool Feed::isInterrupted() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_interrupted;
}

}  // namespace orvelle
