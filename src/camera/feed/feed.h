#pragma once

#include <QString>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "camera/feed/encoded_frame.h"

namespace orvelle {

/// Takes a feed's frames. Called on the feed's threads, one medium at a time.
class FrameSink {
public:
    virtual ~FrameSink() = default;
    virtual void frameReady(const EncodedFrame& frame) = 0;
};

/// The size and cost of a feed's picture.
struct FeedFormat {
    int width = 1280;
    int height = 720;
    int framesPerSecond = 15;
    int64_t bitsPerSecond = 2'000'000;
};

/// What a picture of that size and rate usually takes, in bits per second.
int64_t usualBitRate(const FeedFormat& format);

/// A camera's lens and microphone: makes frames once and gives them to every sink.
///
/// open(), then addSink() for each, then start(); sinks outlive stop(). Demand is counted per
/// medium; nothing is encoded for a medium that nobody watches. The demand calls may come
/// from any thread and never block.
class Feed {
public:
    Feed() = default;
    virtual ~Feed() = default;
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    /// Empty on success, else one line that says what is wrong.
    virtual QString open() = 0;
    /// The picture as it is sent; valid once opened.
    virtual FeedFormat format() const = 0;
    void addSink(FrameSink* sink) { m_sinks.push_back(sink); }
    virtual void start() = 0;
    /// Ends and joins the threads, for good. Idempotent.
    virtual void stop() = 0;

    /// Whether a key frame follows requestKeyFrame() at once; else viewers join through the
    /// cached group of pictures.
    virtual bool makesKeyFrames() const = 0;
    /// Whether the feed ended by itself (a source that is not repeated).
    virtual bool isEnded() const { return false; }

    void addViewer(Medium medium);
    void removeViewer(Medium medium);
    void requestKeyFrame() { m_keyRequested = true; }

protected:
    void emitFrame(const EncodedFrame& frame);
    bool isWanted(Medium medium) const;
    /// Waits until somebody watches; false when interrupted.
    bool waitForViewer(Medium medium);
    /// Waits until `timeUs` of the camera clock; false at once when interrupted.
    bool waitUntil(int64_t timeUs);
    bool takeKeyRequest() { return m_keyRequested.exchange(false); }
    /// Ends all waits, now and from now on.
    void interruptWaits();
    bool isInterrupted() const;

private:
    std::vector<FrameSink*> m_sinks;          ///< fixed once started
    std::atomic<bool> m_keyRequested{false};  ///< a hint; orders nothing
    mutable std::mutex m_mutex;               ///< guards everything below
    std::condition_variable m_changed;
    int m_viewers[2] = {0, 0};  ///< by medium
    bool m_interrupted = false;
};

}  // namespace orvelle
