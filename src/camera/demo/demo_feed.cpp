#include "camera/demo/demo_feed.h"

#include <chrono>
#include <utility>

#include "camera/camera_profile.h"
#include "camera/demo/demo_tone.h"
#include "camera/encoding/painter.h"
#include "core/thread.h"

namespace orvelle {

namespace {

constexpr int64_t kMaxLagUs = 500'000;  ///< sound that is later starts its clock anew

int64_t wallClockUs() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count();
}

}  // namespace

class DemoFeed::VideoThread : public KvThread {
public:
    explicit VideoThread(DemoFeed* feed) : KvThread(QStringLiteral("cam-video")), m_feed(feed) {}
    void run() override { m_feed->runVideo(); }

private:
    DemoFeed* const m_feed;
};

class DemoFeed::AudioThread : public KvThread {
public:
    explicit AudioThread(DemoFeed* feed) : KvThread(QStringLiteral("cam-audio")), m_feed(feed) {}
    void run() override { m_feed->runAudio(); }

private:
    DemoFeed* const m_feed;
};

DemoFeed::DemoFeed(DemoFeedConfig config, const PanTilt* panTilt)
    : m_config(std::move(config)),
      m_panTilt(panTilt),
      m_scene(m_config.format.width, m_config.format.height, m_config.scene,
              m_config.label.toStdString()),
      m_picture(makePicture(m_config.format.width, m_config.format.height)) {}

DemoFeed::~DemoFeed() {
    stop();
}

QString DemoFeed::open() {
    if (m_scene.isNull() || !m_picture)
        return QStringLiteral("out of memory");
    const QString error = m_videoEncoder.open(m_config.videoCodec, m_config.format);
    if (!error.isEmpty() || m_config.audioCodec == AV_CODEC_ID_NONE)
        return error;
    return m_audioEncoder.open(m_config.audioCodec);
}

void DemoFeed::start() {
    m_videoThread = std::make_unique<VideoThread>(this);
    m_videoThread->start();
    if (!m_audioEncoder.isOpen())
        return;
    m_audioThread = std::make_unique<AudioThread>(this);
    m_audioThread->start();
}

void DemoFeed::stop() {
    interruptWaits();
    KvThread::stopAndDelete(m_audioThread);
    KvThread::stopAndDelete(m_videoThread);
}

// A machine that cannot keep up loses pictures, not time.
void DemoFeed::runVideo() {
    const int64_t periodUs = 1'000'000 / m_config.format.framesPerSecond;
    int64_t dueUs = 0;
    while (waitForViewer(Medium::kVideo) && waitUntil(dueUs)) {
        const int64_t nowUs = cameraClockUs();
        shoot(nowUs);
        dueUs += periodUs;
        if (dueUs <= nowUs)
            dueUs = nowUs + periodUs;
    }
}

void DemoFeed::shoot(int64_t timeUs) {
    if (av_frame_make_writable(m_picture.get()) < 0)
        return;
    const int64_t wallUs = wallClockUs();
    SceneTime time;
    time.sceneUs = timeUs;
    time.localDayUs = localDayUs(wallUs, m_config.timezoneMinutes);
    time.stamp = static_cast<uint64_t>(wallUs);
    m_scene.draw(m_picture.get(), time,
                 m_panTilt ? m_panTilt->position(timeUs) : PanTilt::Position());
    if (const auto frame = m_videoEncoder.encode(m_picture.get(), timeUs, takeKeyRequest()))
        emitFrame(*frame);
}

void DemoFeed::runAudio() {
    DemoTone tone(m_audioEncoder.sampleRate());
    std::vector<float> samples(static_cast<size_t>(m_audioEncoder.samplesPerFrame()));
    const auto deliver = [this](const EncodedFrame& frame) { emitFrame(frame); };
    const int64_t blockUs =
        int64_t{m_audioEncoder.samplesPerFrame()} * 1'000'000 / m_audioEncoder.sampleRate();
    int64_t dueUs = 0;
    while (waitForViewer(Medium::kAudio) && waitUntil(dueUs)) {
        const int64_t nowUs = cameraClockUs();
        if (nowUs - dueUs > kMaxLagUs)
            dueUs = nowUs;
        tone.fill(samples);
        m_audioEncoder.encode(samples.data(), static_cast<int>(samples.size()), dueUs - blockUs,
                              deliver);
        dueUs += blockUs;
    }
}

}  // namespace orvelle
