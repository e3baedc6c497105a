#pragma once

#include <memory>
#include <optional>

#include "camera/demo/demo_scene.h"
#include "camera/demo/pan_tilt.h"
#include "camera/encoding/audio_encoder.h"
#include "camera/encoding/video_encoder.h"
#include "camera/feed/feed.h"

class KvThread;

namespace orvelle {

struct DemoFeedConfig {
    FeedFormat format;
    AVCodecID videoCodec = AV_CODEC_ID_H264;
    AVCodecID audioCodec = AV_CODEC_ID_AAC;  ///< AV_CODEC_ID_NONE: silent
    int scene = 0;
    QString label;                       ///< drawn into the picture
    std::optional<int> timezoneMinutes;  ///< of the readable clock; none: this machine's
};

/// The demonstration scene and tone, drawn and encoded while somebody watches. Two threads.
class DemoFeed : public Feed {
public:
    /// `panTilt` moves the view; borrowed, may be null.
    DemoFeed(DemoFeedConfig config, const PanTilt* panTilt);
    ~DemoFeed() override;

    QString open() override;
    void start() override;
    void stop() override;
    FeedFormat format() const override { return m_config.format; }
    bool makesKeyFrames() const override { return true; }

private:
    class VideoThread;
    class AudioThread;

    void runVideo();
    void runAudio();
    void shoot(int64_t timeUs);

    const DemoFeedConfig m_config;
    const PanTilt* const m_panTilt;

    const DemoScene m_scene;
    FramePtr m_picture;           ///< video thread, from start() on
    VideoEncoder m_videoEncoder;  ///< video thread, from start() on
    AudioEncoder m_audioEncoder;  ///< audio thread, from start() on
    std::unique_ptr<KvThread> m_videoThread;
    std::unique_ptr<KvThread> m_audioThread;
};

}  // namespace orvelle
