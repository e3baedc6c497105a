#include "camera/demo/clip_writer.h"

#include <algorithm>
#include <cstring>

#include "camera/card/recording_writer.h"
#include "camera/demo/demo_tone.h"
#include "camera/encoding/painter.h"
#include "camera/encoding/time_base.h"
#include "frames/ffmpeg_io_ptr.h"

namespace orvelle {

namespace {

class ClipWriter {
public:
    explicit ClipWriter(const DemoFeedConfig& config)
        : m_config(config),
          m_scene(config.format.width, config.format.height, config.scene,
                  config.label.toStdString()),
          m_picture(makePicture(config.format.width, config.format.height)),
          m_packet(av_packet_alloc()) {}

    QString write(const QString& fileName, int seconds);

private:
    QString openEncoders();
    QString openFile(const QString& fileName, const EncodedFrame& firstKey);
    void addVideoStream(const EncodedFrame& firstKey);
    void addAudioStream();
    std::optional<EncodedFrame> shoot(int64_t index);
    void writeFrame(const EncodedFrame& frame);

    const DemoFeedConfig& m_config;
    const DemoScene m_scene;
    FramePtr m_picture;
    PacketPtr m_packet;
    VideoEncoder m_video;
    AudioEncoder m_audio;
    OutputFormatPtr m_format;
    AVStream* m_streams[2] = {nullptr, nullptr};  ///< by medium
    int64_t m_soundUs = 0;
    int m_result = 0;  ///< the muxer's first complaint
};

QString ClipWriter::write(const QString& fileName, int seconds) {
    if (m_scene.isNull() || !m_picture || !m_packet)
        return QStringLiteral("out of memory");
    QString error = openEncoders();
    DemoTone tone(std::max(1, m_audio.sampleRate()));
    std::vector<float> samples(size_t(m_audio.samplesPerFrame()));
    const int64_t count = int64_t{seconds} * m_config.format.framesPerSecond;
    for (int64_t index = 0; index < count && error.isEmpty() && m_result >= 0; ++index) {
        const auto frame = shoot(index);
        if (!frame)
            continue;
        if (!m_format)
            error = openFile(fileName, *frame);
        if (!error.isEmpty())
            break;
        writeFrame(*frame);
        while (m_audio.isOpen() && m_soundUs <= frame->timeUs) {
            tone.fill(samples);
            m_audio.encode(samples.data(), static_cast<int>(samples.size()), m_soundUs,
                           [this](const EncodedFrame& sound) { writeFrame(sound); });
            m_soundUs += int64_t{m_audio.samplesPerFrame()} * 1'000'000 / m_audio.sampleRate();
        }
    }
    if (!error.isEmpty())
        return error;
    if (!m_format || m_result < 0 || av_write_trailer(m_format.get()) < 0)
        return QStringLiteral("cannot write %1").arg(fileName);
    return {};
}

QString ClipWriter::openEncoders() {
    const QString error = m_video.open(m_config.videoCodec, m_config.format);
    if (!error.isEmpty() || m_config.audioCodec == AV_CODEC_ID_NONE)
        return error;
    return m_audio.open(m_config.audioCodec);
}

std::optional<EncodedFrame> ClipWriter::shoot(int64_t index) {
    if (av_frame_make_writable(m_picture.get()) < 0)
        return {};
    SceneTime time;
    time.sceneUs = index * 1'000'000 / m_config.format.framesPerSecond;
    time.localDayUs = time.sceneUs;
    time.stamp = static_cast<uint64_t>(time.sceneUs);
    m_scene.draw(m_picture.get(), time, {});
    return m_video.encode(m_picture.get(), time.sceneUs, false);
}

QString ClipWriter::openFile(const QString& fileName, const EncodedFrame& firstKey) {
    const QByteArray path = fileName.toUtf8();
    AVFormatContext* context = nullptr;
    if (avformat_alloc_output_context2(&context, nullptr, nullptr, path.constData()) < 0)
        return QStringLiteral("no container has the suffix of %1").arg(fileName);
    m_format.reset(context);
    addVideoStream(firstKey);
    if (m_audio.isOpen())
        addAudioStream();
    if (!(context->oformat->flags & AVFMT_NOFILE) &&
        avio_open(&context->pb, path.constData(), AVIO_FLAG_WRITE) < 0)
        return QStringLiteral("cannot write %1").arg(fileName);
    if (avformat_write_header(context, nullptr) < 0)
        return QStringLiteral("%1 cannot hold this video and sound").arg(fileName);
    return {};
}

void ClipWriter::addVideoStream(const EncodedFrame& firstKey) {
    AVStream* stream = avformat_new_stream(m_format.get(), nullptr);
    describeVideo(stream, m_config.format, firstKey);
    stream->time_base = kMicroseconds;
    m_streams[static_cast<size_t>(Medium::kVideo)] = stream;
}

void ClipWriter::addAudioStream() {
    AVStream* stream = avformat_new_stream(m_format.get(), nullptr);
    stream->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    stream->codecpar->codec_id = m_config.audioCodec;
    stream->codecpar->sample_rate = m_audio.sampleRate();
    stream->codecpar->frame_size = m_audio.samplesPerFrame();
    av_channel_layout_default(&stream->codecpar->ch_layout, 1);
    stream->time_base = kMicroseconds;
    m_streams[static_cast<size_t>(Medium::kAudio)] = stream;
}

void ClipWriter::writeFrame(const EncodedFrame& frame) {
    AVStream* stream = m_streams[static_cast<size_t>(frame.medium)];
    if (m_result < 0 || av_new_packet(m_packet.get(), static_cast<int>(frame.bytes->size())) < 0)
        return;
    std::memcpy(m_packet->data, frame.bytes->data(), frame.bytes->size());
    m_packet->stream_index = stream->index;
    m_packet->flags = frame.isKey ? AV_PKT_FLAG_KEY : 0;
    m_packet->pts = m_packet->dts = av_rescale_q(frame.timeUs, kMicroseconds, stream->time_base);
    m_result = av_interleaved_write_frame(m_format.get(), m_packet.get());
}

}  // namespace

QString writeClip(const QString& fileName, int seconds, const DemoFeedConfig& config) {
    return ClipWriter(config).write(fileName, seconds);
}

}  // namespace orvelle
