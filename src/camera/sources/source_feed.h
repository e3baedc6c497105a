#pragma once

#include <atomic>
#include <memory>

#include "camera/feed/feed.h"
#include "camera/sources/media_source.h"
#include "camera/sources/sound_normaliser.h"
#include "camera/sources/stream_normaliser.h"

class KvThread;

namespace orvelle {

struct SourceFeedConfig {
    MediaSourceConfig source;
    NormaliserConfig video;                  ///< isLive is set by the source
    AVCodecID audioCodec = AV_CODEC_ID_AAC;  ///< AV_CODEC_ID_NONE: silent
};

/// A file, webcam or network camera as a feed: one thread reads, paces files in real time, lets
/// through what clients can take and encodes the rest. A source that fails later is opened
/// again, with growing pauses of up to 10 s.
class SourceFeed : public Feed {
public:
    explicit SourceFeed(SourceFeedConfig config);
    ~SourceFeed() override;

    /// Opens the source, so that a wrong name is told at once.
    QString open() override;
    void start() override;
    void stop() override;
    FeedFormat format() const override { return m_format; }
    bool makesKeyFrames() const override { return m_makesKeyFrames; }
    bool isEnded() const override { return m_isEnded; }

private:
    class ReadThread;

    QString openSource();
    void run();
    bool openAgain();
    void handle(AVPacket* packet);
    bool alignClock(int64_t sourceUs);

    const SourceFeedConfig m_config;
    FeedFormat m_format;  ///< fixed by open()

    MediaSource m_source;         ///< read thread, from start() on
    StreamNormaliser m_video;     ///< read thread
    SoundNormaliser m_sound;      ///< read thread
    int64_t m_clockOffsetUs = 0;  ///< read thread; camera clock minus source time
    bool m_isClockSet = false;    ///< read thread

    std::atomic<bool> m_makesKeyFrames{false};  ///< a hint; orders nothing
    std::atomic<bool> m_isEnded{false};         ///< orders nothing
    std::unique_ptr<KvThread> m_thread;
};

}  // namespace orvelle
