#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "camera/card/card_store.h"
#include "camera/card/minute_recorder.h"
#include "camera/feed/feed.h"

class KvThread;

namespace orvelle {

/// A camera's memory card: records the feed on a thread of its own from start() to stop(), which
/// counts as demand for picture and sound all that time.
///
/// May be shared by several cameras, as the feed. Construct it before the feed starts, stop it
/// before the feed and before the cameras are destroyed.
class MemoryCard : private FrameSink {
public:
    /// `feed` is open, and borrowed.
    MemoryCard(const QString& directory, int64_t quotaBytes, Feed* feed);
    ~MemoryCard() override;

    /// Reads the card before it returns.
    void start();
    /// Finishes the current recording. Idempotent.
    void stop();

    /// Its calls for any thread only.
    const CardStore& store() const { return m_store; }

    /// Removes all recordings and goes on recording; `done` is called on the card's thread with
    /// whether they are gone, or never when the card stops before. Any thread.
    void format(std::function<void(bool)> done);

private:
    class Thread;
    struct Work {
        std::deque<EncodedFrame> frames;
        std::vector<std::function<void(bool)>> formats;
        bool hasGap = false;
    };

    void frameReady(const EncodedFrame& frame) override;
    void run();
    Work waitForWork();
    void refresh();
    void record(const Work& work);

    Feed* const m_feed;
    CardStore m_store;          ///< card thread, but for its calls for any
    MinuteRecorder m_recorder;  ///< card thread

    std::mutex m_mutex;  ///< guards the next four
    std::condition_variable m_changed;
    bool m_isRunning = false;
    Work m_work;
    size_t m_waitingBytes = 0;

    std::unique_ptr<KvThread> m_thread;
};

}  // namespace orvelle
