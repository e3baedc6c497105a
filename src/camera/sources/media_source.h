#pragma once

#include <QString>

#include <atomic>

#include "frames/ffmpeg_io_ptr.h"

namespace orvelle {

struct MediaSourceConfig {
    QString url;  ///< a file name, a /dev/video device or an rtsp:// address; may hold a password
    bool isRepeated = true;  ///< files start again at their end
    int webcamWidth = 1280;  ///< asked of webcams, which may choose otherwise
    int webcamHeight = 720;
    int webcamFps = 15;
};

/// The address without what stands between "//" and "@", for people and logs.
QString withoutCredentials(const QString& url);

/// Reads the best video and audio stream of anything FFmpeg can open; a file that is repeated
/// goes on with continuous times. One thread, but for interrupt().
class MediaSource {
public:
    enum class Result { kPacket, kEnd, kFailed };

    explicit MediaSource(MediaSourceConfig config);

    /// Empty on success, else one line of reason without credentials. Blocks for at most 10 s.
    QString open();

    /// The next packet of either stream; pts and dts are set, in microseconds. Blocks on a live
    /// source, for at most 10 s.
    Result read(AVPacket* packet);

    bool isLive() const;                               ///< it paces itself
    const AVStream* video() const { return m_video; }  ///< null unless open
    const AVStream* audio() const { return m_audio; }  ///< null: none

    /// Ends a blocking open() or read(), now and from now on. Any thread.
    void interrupt() { m_interrupted = true; }

private:
    static int shouldStop(void* self);

    int openInput();
    bool isWebcam() const;
    void setDeadline();
    void stampPacket(AVPacket* packet);
    bool rewind();

    const MediaSourceConfig m_config;
    std::atomic<bool> m_interrupted{false};
    int64_t m_deadlineUs = 0;  ///< of the blocking call, on FFmpeg's relative clock
    InputFormatPtr m_format;
    const AVStream* m_video = nullptr;
    const AVStream* m_audio = nullptr;
    int64_t m_firstUs = AV_NOPTS_VALUE;  ///< the file's first time
    int64_t m_offsetUs = 0;              ///< added to the times of this pass
    int64_t m_videoEndUs = 0;            ///< where the last packet ended
    int64_t m_audioEndUs = 0;
    bool m_isPassEmpty = true;  ///< nothing was read since the last rewind
};

}  // namespace orvelle
