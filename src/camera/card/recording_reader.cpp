#include "camera/card/recording_reader.h"

#include <QFile>

#include <utility>

#include "camera/encoding/time_base.h"
#include "frames/camera_codecs.h"

namespace orvelle {

namespace {

/// Of pictures from one key picture to the next: more is in no recording of a camera's own.
constexpr size_t kMaxHeldBytes = 64 * 1024 * 1024;

SharedBytes copyOf(const AVPacket& packet) {
    return std::make_shared<std::vector<uint8_t>>(packet.data, packet.data + packet.size);
}

}  // namespace

// The header says all that is needed, so nothing is probed.
QString RecordingReader::open(const QString& path) {
    const QString unreadable = QStringLiteral("%1 is no recording").arg(path);
    m_packet.reset(av_packet_alloc());
    m_ahead.clear();
    m_video = m_audio = nullptr;
    m_readFrames = 0;
    m_path = path;
    AVFormatContext* context = nullptr;
    const int opened = avformat_open_input(&context, path.toUtf8().constData(),
                                           av_find_input_format("matroska"), nullptr);
    m_format.reset(context);
    if (opened < 0 || !m_packet)
        return unreadable;
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVStream* stream = context->streams[i];
        if (cameraIdOfCodec(stream->codecpar->codec_id) == 0)
            continue;
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
            m_video = stream;
        else if (stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            m_audio = stream;
    }
    if (m_audio)
        m_adts = adtsFormatOf(m_audio->codecpar->extradata, m_audio->codecpar->extradata_size);
    return m_video && openFilter() ? QString() : unreadable;
}

void RecordingReader::reopen(const QString& path) {
    const int64_t known = m_readFrames;
    if (!open(path).isEmpty())
        m_format.reset();
    while (m_readFrames < known && readFrame()) {
    }
    m_readFrames = known;
}

bool RecordingReader::openFilter() {
    const AVCodecID codec = m_video->codecpar->codec_id;
    const char* name = codec == AV_CODEC_ID_H264   ? "h264_mp4toannexb"
                       : codec == AV_CODEC_ID_HEVC ? "hevc_mp4toannexb"
                                                   : "null";
    AVBSFContext* context = nullptr;
    const AVBitStreamFilter* filter = av_bsf_get_by_name(name);
    if (!filter || av_bsf_alloc(filter, &context) < 0)
        return false;
    m_filter.reset(context);
    context->time_base_in = m_video->time_base;
    return avcodec_parameters_copy(context->par_in, m_video->codecpar) >= 0 &&
           av_bsf_init(context) >= 0;
}

void RecordingReader::jumpTowards(int64_t timeUs) {
    AVStream* video = m_format->streams[m_video->index];
    const int64_t time = av_rescale_q(timeUs, kMicroseconds, video->time_base);
    const bool isThere =
        av_seek_frame(m_format.get(), video->index, time, AVSEEK_FLAG_BACKWARD) >= 0;
    if (!isThere)
        open(QString(m_path));
}

void RecordingReader::seek(int64_t timeUs, bool isFinished) {
    if (isFinished)
        jumpTowards(timeUs);
    std::deque<EncodedFrame> group;
    bool hasKey = false;
    size_t heldBytes = 0;
    while (auto frame = readFrame()) {
        const bool isVideo = frame->medium == Medium::kVideo;
        const bool isBeyond = isVideo && frame->timeUs > timeUs;
        if (isVideo && frame->isKey && (!isBeyond || !hasKey)) {
            group.clear();
            heldBytes = 0;
            hasKey = true;
        }
        if (!hasKey)
            continue;
        heldBytes += frame->bytes->size();
        group.push_back(std::move(*frame));
        if (isBeyond || heldBytes >= kMaxHeldBytes)
            break;
    }
    m_ahead.swap(group);
}

std::optional<EncodedFrame> RecordingReader::next() {
    if (m_ahead.empty())
        return readFrame();
    EncodedFrame frame = std::move(m_ahead.front());
    m_ahead.pop_front();
    return frame;
}

std::optional<EncodedFrame> RecordingReader::readFrame() {
    while (m_format && av_read_frame(m_format.get(), m_packet.get()) >= 0) {
        const auto frame = frameOf(m_packet.get());
        av_packet_unref(m_packet.get());
        if (!frame)
            continue;
        ++m_readFrames;
        return frame;
    }
    return {};
}

std::optional<EncodedFrame> RecordingReader::frameOf(AVPacket* packet) {
    const bool isVideo = packet->stream_index == m_video->index;
    const bool isAudio = m_audio && packet->stream_index == m_audio->index;
    if ((!isVideo && !isAudio) || packet->pts == AV_NOPTS_VALUE || packet->size <= 0)
        return {};
    const AVStream& stream = isVideo ? *m_video : *m_audio;
    EncodedFrame frame;
    frame.medium = isVideo ? Medium::kVideo : Medium::kAudio;
    frame.codecId = static_cast<uint16_t>(cameraIdOfCodec(stream.codecpar->codec_id));
    frame.isKey = packet->flags & AV_PKT_FLAG_KEY;
    frame.timeUs = av_rescale_q(packet->pts, stream.time_base, kMicroseconds);
    if (isVideo && (av_bsf_send_packet(m_filter.get(), packet) < 0 ||
                    av_bsf_receive_packet(m_filter.get(), packet) < 0))
        return {};
    frame.bytes = isVideo ? copyOf(*packet) : soundBytes(*packet);
    return frame;
}

SharedBytes RecordingReader::soundBytes(const AVPacket& packet) const {
    if (!m_adts)
        return copyOf(packet);
    std::vector<uint8_t> bytes = adtsHeader(*m_adts, packet.size);
    bytes.insert(bytes.end(), packet.data, packet.data + packet.size);
    return std::make_shared<std::vector<uint8_t>>(std::move(bytes));
}

}  // namespace orvelle
