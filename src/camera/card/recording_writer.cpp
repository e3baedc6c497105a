#include "camera/card/recording_writer.h"

#include <QFile>

#include <algorithm>
#include <cstring>
#include <vector>

#include "frames/camera_codecs.h"
#include "frames/parameter_sets.h"

namespace orvelle {

namespace {

constexpr char kClusterMs[] = "1000";  ///< what a crash may cost
constexpr AVRational kMilliseconds = {1, 1000};

}  // namespace

std::optional<RecordedSound> RecordedSound::of(const EncodedFrame& frame) {
    RecordedSound sound{frame.codecId, {}};
    switch (codecOfCameraId(frame.codecId)) {
        case AV_CODEC_ID_PCM_ALAW:
            return sound;
        case AV_CODEC_ID_AAC:
            sound.adts = readAdtsHeader(frame.bytes->data(), static_cast<int>(frame.bytes->size()));
            return sound.adts ? std::optional(sound) : std::nullopt;
        default:
            return {};
    }
}

bool RecordedSound::operator==(const RecordedSound& other) const {
    return codecId == other.codecId && adts == other.adts;
}

bool describeVideo(AVStream* stream, const FeedFormat& format, const EncodedFrame& key) {
    AVCodecParameters* parameters = stream->codecpar;
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = codecOfCameraId(key.codecId);
    parameters->width = format.width;
    parameters->height = format.height;
    stream->avg_frame_rate = {format.framesPerSecond, 1};
    const std::vector<uint8_t> sets =
        parameterSets(parameters->codec_id, key.bytes->data(), key.bytes->size());
    return !sets.empty() && setExtradata(*parameters, sets);
}

RecordingWriter::RecordingWriter() : m_packet(av_packet_alloc()) {}

QString RecordingWriter::open(const QString& path, const FeedFormat& format,
                              const EncodedFrame& key, const std::optional<RecordedSound>& sound) {
    m_sound = sound;
    m_result = 0;
    m_lastMs[0] = m_lastMs[1] = 0;
    AVFormatContext* context = nullptr;
    avformat_alloc_output_context2(&context, nullptr, "matroska", nullptr);
    OutputFormatPtr file(context);
    AVStream* video = file ? avformat_new_stream(context, nullptr) : nullptr;
    if (!m_packet || !video)
        return QStringLiteral("out of memory");
    m_format = std::move(file);
    if (!describeVideo(video, format, key) || (sound && !addSound(*sound))) {
        m_format.reset();
        return QStringLiteral("the stream cannot be recorded");
    }
    context->flags |= AVFMT_FLAG_FLUSH_PACKETS;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "cluster_time_limit", kClusterMs, 0);
    m_result = avio_open(&context->pb, path.toUtf8().constData(), AVIO_FLAG_WRITE);
    if (m_result >= 0)
        m_result = avformat_write_header(context, &options);
    av_dict_free(&options);
    if (!hasFailed())
        return {};
    m_format.reset();
    return error();
}

bool RecordingWriter::addSound(const RecordedSound& sound) {
    AVStream* stream = avformat_new_stream(m_format.get(), nullptr);
    if (!stream)
        return false;
    AVCodecParameters* parameters = stream->codecpar;
    parameters->codec_type = AVMEDIA_TYPE_AUDIO;
    parameters->codec_id = codecOfCameraId(sound.codecId);
    parameters->sample_rate = sound.adts ? sampleRateOf(*sound.adts) : 8000;
    parameters->bits_per_coded_sample = sound.adts ? 0 : 8;
    parameters->block_align = sound.adts ? 0 : 1;
    av_channel_layout_default(&parameters->ch_layout, sound.adts ? sound.adts->channels : 1);
    return !sound.adts || setExtradata(*parameters, audioConfigOf(*sound.adts));
}

// Writes are buffered: what failed meanwhile shows in the file's own error.
bool RecordingWriter::hasFailed() {
    if (m_result >= 0 && m_format && m_format->pb && m_format->pb->error < 0)
        m_result = m_format->pb->error;
    return m_result < 0;
}

bool RecordingWriter::write(const EncodedFrame& frame, int64_t timeMs) {
    const bool isVideo = frame.medium == Medium::kVideo;
    const auto sound = isVideo ? std::nullopt : RecordedSound::of(frame);
    if (!isVideo && (!sound || !m_sound || !(*sound == *m_sound)))
        return !hasFailed();
    // Raw AAC: the header of each frame is in the file's once.
    const size_t skipped = sound && sound->adts ? adtsHeaderBytes(frame.bytes->data()) : 0;
    const size_t size = frame.bytes->size() - skipped;
    if (hasFailed() || av_new_packet(m_packet.get(), static_cast<int>(size)) < 0)
        return false;
    std::memcpy(m_packet->data, frame.bytes->data() + skipped, size);
    int64_t& lastMs = m_lastMs[static_cast<size_t>(frame.medium)];
    lastMs = std::max(lastMs, timeMs);
    AVStream* stream = m_format->streams[isVideo ? 0 : 1];
    m_packet->stream_index = stream->index;
    m_packet->flags = frame.isKey ? AV_PKT_FLAG_KEY : 0;
    m_packet->pts = m_packet->dts = av_rescale_q(lastMs, kMilliseconds, stream->time_base);
    m_result = av_write_frame(m_format.get(), m_packet.get());
    av_packet_unref(m_packet.get());
    return !hasFailed();
}

bool RecordingWriter::close() {
    if (!m_format)
        return true;
    if (!hasFailed())
        m_result = av_write_trailer(m_format.get());
    else
        av_write_trailer(m_format.get());  // frees what the muxer holds
    const bool isWritten = !hasFailed();
    m_format.reset();
    return isWritten;
}

QString RecordingWriter::error() const {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(m_result, text, sizeof text);
    return QString::fromUtf8(text);
}

}  // namespace orvelle
