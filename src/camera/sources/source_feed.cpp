#include "camera/sources/source_feed.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "camera/camera_log.h"
#include "core/thread.h"

namespace orvelle {

namespace {

constexpr int64_t kMaxClockErrorUs = 2'000'000;
constexpr int64_t kFirstPauseUs = 500'000;
constexpr int64_t kLongestPauseUs = 10'000'000;

NormaliserConfig videoConfig(const SourceFeedConfig& config, bool isLive) {
    NormaliserConfig video = config.video;
    video.isLive = isLive;
    return video;
}

}  // namespace

class SourceFeed::ReadThread : public KvThread {
public:
    explicit ReadThread(SourceFeed* feed) : KvThread(QStringLiteral("cam-source")), m_feed(feed) {}
    void run() override { m_feed->run(); }

private:
    SourceFeed* const m_feed;
};

SourceFeed::SourceFeed(SourceFeedConfig config)
    : m_config(std::move(config)),
      m_source(m_config.source),
      m_video(videoConfig(m_config, m_source.isLive()),
              [this](const EncodedFrame& frame) { emitFrame(frame); }),
      m_sound(m_config.audioCodec, [this](const EncodedFrame& frame) { emitFrame(frame); }) {}

SourceFeed::~SourceFeed() {
    stop();
}

QString SourceFeed::open() {
    const QString error = openSource();
    m_format = m_video.format();
    return error;
}

QString SourceFeed::openSource() {
    QString error = m_source.open();
    if (error.isEmpty())
        error = m_video.open(*m_source.video());
    m_makesKeyFrames = m_video.isEncoding();
    if (error.isEmpty() && m_source.audio())
        error = m_sound.open(*m_source.audio());
    return error;
}

void SourceFeed::start() {
    m_thread = std::make_unique<ReadThread>(this);
    m_thread->start();
}

void SourceFeed::stop() {
    interruptWaits();
    m_source.interrupt();
    KvThread::stopAndDelete(m_thread);
}

void SourceFeed::run() {
    const PacketPtr packet(av_packet_alloc());
    while (packet && !isInterrupted()) {
        const MediaSource::Result result = m_source.read(packet.get());
        if (result == MediaSource::Result::kPacket)
            handle(packet.get());
        else if (result == MediaSource::Result::kEnd || !openAgain())
            break;
        av_packet_unref(packet.get());
    }
    m_isEnded = true;
}

bool SourceFeed::openAgain() {
    if (!isInterrupted())
        qCWarning(lcCamera, "the source failed; it is opened again");
    m_isClockSet = false;
    for (int64_t pauseUs = kFirstPauseUs; waitUntil(cameraClockUs() + pauseUs);) {
        if (openSource().isEmpty()) {
            qCInfo(lcCamera, "the source is back");
            return true;
        }
        pauseUs = std::min(2 * pauseUs, kLongestPauseUs);
    }
    return false;
}

void SourceFeed::handle(AVPacket* packet) {
    if (!alignClock(packet->dts))
        return;
    packet->pts += m_clockOffsetUs;
    packet->dts += m_clockOffsetUs;
    if (packet->stream_index == m_source.video()->index)
        m_video.push(*packet, isWanted(Medium::kVideo), takeKeyRequest());
    else
        m_sound.push(*packet, isWanted(Medium::kAudio));
    m_makesKeyFrames = m_video.isEncoding();
}

// Files wait until their time has come. Live frames are never stamped later than they came,
// else clients would hold them back. Jumps of the source's clock do not show.
bool SourceFeed::alignClock(int64_t sourceUs) {
    const int64_t nowUs = cameraClockUs();
    const int64_t aheadUs = sourceUs + m_clockOffsetUs - nowUs;
    const bool isEarly = m_source.isLive() && aheadUs > 0;
    if (!m_isClockSet || isEarly || std::llabs(aheadUs) > kMaxClockErrorUs)
        m_clockOffsetUs = nowUs - sourceUs;
    m_isClockSet = true;
    return m_source.isLive() || waitUntil(sourceUs + m_clockOffsetUs);
}

}  // namespace orvelle
