#include "camera/card/memory_card.h"

#include <chrono>
#include <utility>

#include "camera/camera_log.h"
#include "core/thread.h"

namespace orvelle {

namespace {

constexpr std::chrono::seconds kCheckInterval{2};
/// Several seconds of any stream; a card that takes longer costs frames, not memory.
constexpr size_t kMaxWaitingBytes = 16 * 1024 * 1024;

int64_t wallOffsetUs() {
    const auto wall = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(wall).count() - cameraClockUs();
}

}  // namespace

class MemoryCard::Thread : public KvThread {
public:
    explicit Thread(MemoryCard* card) : KvThread(QStringLiteral("cam-card")), m_card(card) {}
    void run() override { m_card->run(); }

private:
    MemoryCard* const m_card;
};

MemoryCard::MemoryCard(const QString& directory, int64_t quotaBytes, Feed* feed)
    : m_feed(feed), m_store(directory, quotaBytes), m_recorder(&m_store, feed->format()) {
    m_feed->addSink(this);
}

MemoryCard::~MemoryCard() {
    stop();
}

void MemoryCard::start() {
    m_store.refresh();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isRunning = true;
    }
    m_thread = std::make_unique<Thread>(this);
    m_thread->start();
    m_feed->requestKeyFrame();
    m_feed->addViewer(Medium::kVideo);
    m_feed->addViewer(Medium::kAudio);
}

void MemoryCard::stop() {
    if (!m_thread)
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isRunning = false;
    }
    m_changed.notify_all();
    KvThread::stopAndDelete(m_thread);
    m_feed->removeViewer(Medium::kVideo);
    m_feed->removeViewer(Medium::kAudio);
}

void MemoryCard::format(std::function<void(bool)> done) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_work.formats.push_back(std::move(done));
    }
    m_changed.notify_all();
}

void MemoryCard::frameReady(const EncodedFrame& frame) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_isRunning)
            return;
        if (m_waitingBytes + frame.bytes->size() > kMaxWaitingBytes) {
            m_work.hasGap = true;
            return;
        }
        m_waitingBytes += frame.bytes->size();
        m_work.frames.push_back(frame);
    }
    m_changed.notify_all();
}

void MemoryCard::run() {
    auto checkedAt = std::chrono::steady_clock::now();
    while (!m_thread->isStopped()) {
        const Work work = waitForWork();
        const auto now = std::chrono::steady_clock::now();
        if (now - checkedAt >= kCheckInterval) {
            refresh();
            checkedAt = now;
        }
        record(work);
        for (const auto& done : work.formats) {
            m_recorder.drop();
            done(m_store.format());
            m_feed->requestKeyFrame();
        }
    }
    m_recorder.close();
}

MemoryCard::Work MemoryCard::waitForWork() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, kCheckInterval, [this] {
        return !m_isRunning || !m_work.frames.empty() || !m_work.formats.empty();
    });
    m_waitingBytes = 0;
    return std::exchange(m_work, {});
}

void MemoryCard::refresh() {
    switch (m_store.refresh()) {
        case CardStore::Presence::kSame:
            if (!m_store.isWritable())
                m_recorder.drop();
            return;
        case CardStore::Presence::kNew:
            qCInfo(lcCamera, "the memory card is back");
            [[fallthrough]];
        case CardStore::Presence::kAbsent:
            m_recorder.drop();
    }
}

void MemoryCard::record(const Work& work) {
    if (!m_store.isWritable())
        return;
    const int64_t offsetUs = wallOffsetUs();
    for (const EncodedFrame& frame : work.frames)
        m_recorder.take(frame, offsetUs);
    if (work.hasGap) {
        qCWarning(lcCamera, "the memory card is too slow: part of a recording is missing");
        m_recorder.close();
    }
    if (m_recorder.takeKeyRequest() && m_feed->makesKeyFrames())
        m_feed->requestKeyFrame();
}

}  // namespace orvelle
