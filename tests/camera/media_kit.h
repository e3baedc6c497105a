#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <mutex>

#include "camera/demo/clip_writer.h"
#include "camera/encoding/painter.h"
#include "frames/camera_codecs.h"
#include "frames/parameter_sets.h"
#include "frames/picture_clock.h"
#include "link/limits.h"

namespace orvelle::test {

/// Keeps the frames of a feed or normaliser. Any thread.
class FrameCollector : public FrameSink {
public:
    void frameReady(const EncodedFrame& frame) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_frames[frame.medium == Medium::kAudio].push_back(frame);
    }
    std::vector<EncodedFrame> frames(Medium medium) const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_frames[medium == Medium::kAudio];
    }
    size_t count(Medium medium) const { return frames(medium).size(); }

private:
    mutable std::mutex m_mutex;  ///< guards m_frames
    std::vector<EncodedFrame> m_frames[2];
};

/// Decodes frames of one medium as a client does: one by one, with nothing known beforehand.
inline std::vector<FramePtr> decode(const std::vector<EncodedFrame>& frames) {
    std::vector<FramePtr> decoded;
    if (frames.empty())
        return decoded;
    const AVCodec* codec = avcodec_find_decoder(codecOfCameraId(frames.front().codecId));
    const CodecContextPtr context(avcodec_alloc_context3(codec));
    context->sample_rate = 8000;
    av_channel_layout_default(&context->ch_layout, 1);
    const PacketPtr packet(av_packet_alloc());
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return decoded;
    for (const EncodedFrame& frame : frames) {
        if (av_new_packet(packet.get(), int(frame.bytes->size())) < 0)
            break;
        std::copy(frame.bytes->begin(), frame.bytes->end(), packet->data);
        avcodec_send_packet(context.get(), packet.get());
        av_packet_unref(packet.get());
        FramePtr out(av_frame_alloc());
        if (avcodec_receive_frame(context.get(), out.get()) >= 0)
            decoded.push_back(std::move(out));
    }
    return decoded;
}

/// The picture clock of a decoded picture.
inline std::optional<uint64_t> clockOf(const AVFrame& picture) {
    return readPictureClock({picture.data[0], picture.width, picture.height, picture.linesize[0]});
}

/// What clients take for granted of a video stream: a key frame first, parameter sets with every
/// key frame, sizes within the limit, times that rise. Empty when so, else the fault.
inline std::string faultOf(const std::vector<EncodedFrame>& frames) {
    if (frames.empty() || !frames.front().isKey)
        return "no key frame at the start";
    int64_t lastUs = frames.front().timeUs - 1;
    for (const EncodedFrame& frame : frames) {
        const std::vector<uint8_t>& bytes = *frame.bytes;
        if (bytes.empty() || bytes.size() > size_t{kMaxVideoFrameBytes})
            return "a frame of " + std::to_string(bytes.size()) + " bytes";
        const AVCodecID codec = codecOfCameraId(frame.codecId);
        if (frame.isKey && parameterSets(codec, bytes.data(), bytes.size()).empty())
            return "a key frame without parameter sets";
        if (frame.timeUs <= lastUs)
            return "a time that does not rise";
        lastUs = frame.timeUs;
    }
    return {};
}

/// Counts warnings while it exists.
class WarningCount {
public:
    WarningCount() : m_former(qInstallMessageHandler(&WarningCount::count)) { s_count = 0; }
    ~WarningCount() { qInstallMessageHandler(m_former); }
    WarningCount(const WarningCount&) = delete;
    WarningCount& operator=(const WarningCount&) = delete;
    int value() const { return s_count; }

private:
    static void count(QtMsgType type, const QMessageLogContext&, const QString&) {
        s_count += type == QtWarningMsg;
    }

    static inline std::atomic<int> s_count{0};
    const QtMessageHandler m_former;
};

/// The demo scene and tone as a camera sends them, in order of time from 0 on, as fast as they
/// can be made: five pictures a second, a key frame every ten. The clock is the frame's time.
inline std::vector<EncodedFrame> quickStream(int seconds, AVCodecID video = AV_CODEC_ID_H264,
                                             AVCodecID audio = AV_CODEC_ID_NONE) {
    const FeedFormat format{128, 80, 5, 100'000};
    const DemoScene scene(format.width, format.height, 0, {});
    const FramePtr picture = makePicture(format.width, format.height);
    std::vector<EncodedFrame> frames;
    VideoEncoder videoEncoder;
    AudioEncoder audioEncoder;
    videoEncoder.open(video, format);
    if (audio != AV_CODEC_ID_NONE)
        audioEncoder.open(audio);
    const std::vector<float> samples(
        size_t(audioEncoder.isOpen() ? audioEncoder.sampleRate() : 0) / 5, 0.25F);
    for (int64_t timeUs = 0; timeUs < seconds * 1'000'000; timeUs += 200'000) {
        av_frame_make_writable(picture.get());
        scene.draw(picture.get(), {timeUs, timeUs, uint64_t(timeUs)}, {});
        frames.push_back(*videoEncoder.encode(picture.get(), timeUs, false));
        if (audioEncoder.isOpen())
            audioEncoder.encode(samples.data(), int(samples.size()), timeUs,
                                [&](const EncodedFrame& frame) { frames.push_back(frame); });
    }
    return frames;
}

inline DemoFeedConfig smallDemo() {
    DemoFeedConfig config;
    config.format = {320, 180, 15, 800'000};
    return config;
}

/// Three seconds of the demo scene (45 pictures, clock = index / 15 s) passed through the ffmpeg
/// program with these output options; false when it fails.
inline bool makeClip(const QString& fileName, const QString& options) {
    const QTemporaryDir directory;
    const QString scene = directory.filePath(QStringLiteral("scene.mp4"));
    const QString line =
        QStringLiteral("-v error -y -i %1 -vsync 0 %2 %3").arg(scene, options, fileName);
    return writeClip(scene, 3, smallDemo()).isEmpty() &&
           QProcess::execute(QStringLiteral("ffmpeg"), line.split(QLatin1Char(' '))) == 0;
}

/// Which picture of makeClip() it is; -1 when its clock cannot be read.
inline int clipIndexOf(const AVFrame& picture) {
    const auto clock = clockOf(picture);
    return clock ? static_cast<int>((*clock * 15 + 500'000) / 1'000'000) : -1;
}

}  // namespace orvelle::test
