#include "camera/sources/media_source.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

#include "camera/encoding/time_base.h"

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/time.h>
}

namespace orvelle {

namespace {

constexpr int64_t kTimeoutUs = 10'000'000;
constexpr int64_t kUsualDurationUs = 40'000;
constexpr int kStillFps = 15;

struct Options {
    AVDictionary* entries = nullptr;

    Options() = default;
    ~Options() { av_dict_free(&entries); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    void set(const char* key, const QString& value) {
        av_dict_set(&entries, key, value.toUtf8().constData(), 0);
    }
};

QString errorText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromUtf8(text);
}

/// Where the host or the user's name begins; -1 in the path of a file.
int authorityBegin(const QString& url) {
    static const QRegularExpression kScheme(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]*://"));
    const QRegularExpressionMatch match = kScheme.match(url);
    return match.hasMatch() ? match.capturedEnd() : -1;
}

bool isRtsp(const QString& url) {
    return authorityBegin(url) >= 0 && url.startsWith(QLatin1String("rtsp"), Qt::CaseInsensitive);
}

// FFmpeg's name for single pictures, chosen by the suffix.
bool isStillPicture(const QString& url) {
    const AVOutputFormat* format = av_guess_format(nullptr, url.toUtf8().constData(), nullptr);
    return format && qstrcmp(format->name, "image2") == 0;
}

int64_t durationUs(const AVPacket& packet, const AVStream& stream) {
    if (packet.duration > 0)
        return av_rescale_q(packet.duration, stream.time_base, kMicroseconds);
    if (stream.avg_frame_rate.num > 0 && stream.avg_frame_rate.den > 0)
        return av_rescale_q(1, av_inv_q(stream.avg_frame_rate), kMicroseconds);
    return kUsualDurationUs;
}

}  // namespace

QString withoutCredentials(const QString& url) {
    const int begin = authorityBegin(url);
    if (begin < 0)
        return url;
    const int pathBegin = url.indexOf(QLatin1Char('/'), begin);
    const QString host = url.mid(begin, pathBegin < 0 ? -1 : pathBegin - begin);
    const int colon = host.indexOf(QLatin1Char(':'));
    // What is no port belongs to a password, whose slash ought to have been escaped.
    bool isPort = colon < 0;
    if (!isPort)
        host.midRef(colon + 1).toUShort(&isPort);
    const bool isWholeHost = isPort || host.contains(QLatin1Char('@'));
    const int at = url.lastIndexOf(QLatin1Char('@'), isWholeHost ? pathBegin : -1);
    return at >= begin ? QString(url.left(begin) + url.mid(at + 1)) : url;
}

MediaSource::MediaSource(MediaSourceConfig config) : m_config(std::move(config)) {}

// FFmpeg asks from within its blocking calls.
int MediaSource::shouldStop(void* self) {
    const auto* source = static_cast<const MediaSource*>(self);
    return source->m_interrupted || av_gettime_relative() > source->m_deadlineUs;
}

void MediaSource::setDeadline() {
    m_deadlineUs = av_gettime_relative() + kTimeoutUs;
}

// What FFmpeg calls the way to the webcam that an address names; null for no webcam.
static const char* webcamFormat(const QString& url) {
    if (url.startsWith(QLatin1String("/dev/video")))
        return "v4l2";
    return url.startsWith(QLatin1String("video=")) ? "dshow" : nullptr;
}

bool MediaSource::isWebcam() const {
    return webcamFormat(m_config.url) != nullptr;
}

bool MediaSource::isLive() const {
    return isWebcam() || isRtsp(m_config.url);
}

QString MediaSource::open() {
    m_video = m_audio = nullptr;
    m_format.reset();
    const QString name = withoutCredentials(m_config.url);
    const int result = openInput();
    if (result < 0)
        return QStringLiteral("cannot open %1: %2").arg(name, errorText(result));
    const int video = av_find_best_stream(m_format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    const int audio =
        av_find_best_stream(m_format.get(), AVMEDIA_TYPE_AUDIO, -1, video, nullptr, 0);
    if (video < 0)
        return QStringLiteral("%1 holds no video").arg(name);
    m_video = m_format->streams[video];
    m_audio = audio < 0 ? nullptr : m_format->streams[audio];
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        if (int(i) != video && int(i) != audio)
            m_format->streams[i]->discard = AVDISCARD_ALL;
    }
    m_firstUs = AV_NOPTS_VALUE;
    m_isPassEmpty = true;
    return {};
}

int MediaSource::openInput() {
    Options options;
    const AVInputFormat* format = nullptr;
    if (isWebcam()) {
        avdevice_register_all();
        format = av_find_input_format(webcamFormat(m_config.url));
        options.set("video_size",
                    QStringLiteral("%1x%2").arg(m_config.webcamWidth).arg(m_config.webcamHeight));
        options.set("framerate", QString::number(m_config.webcamFps));
    } else if (isRtsp(m_config.url)) {
        options.set("rtsp_transport", QStringLiteral("tcp"));
        options.set("timeout", QString::number(kTimeoutUs / 2));
        options.set("fflags", QStringLiteral("nobuffer"));
    } else if (isStillPicture(m_config.url)) {
        options.set("framerate", QString::number(kStillFps));
        options.set("loop", QString::number(m_config.isRepeated ? 1 : 0));
    }
    AVFormatContext* context = avformat_alloc_context();
    if (!context)
        return AVERROR(ENOMEM);
    context->interrupt_callback = {&MediaSource::shouldStop, this};
    setDeadline();
    const int opened =
        avformat_open_input(&context, m_config.url.toUtf8().constData(), format, &options.entries);
    m_format.reset(context);
    return opened < 0 ? opened : avformat_find_stream_info(context, nullptr);
}

MediaSource::Result MediaSource::read(AVPacket* packet) {
    while (m_format) {
        setDeadline();
        const int result = av_read_frame(m_format.get(), packet);
        if (result == AVERROR_EOF && !isLive() && !m_isPassEmpty) {
            if (!m_config.isRepeated)
                return Result::kEnd;
            if (rewind())
                continue;
        }
        if (result < 0)
            return Result::kFailed;
        if (packet->stream_index == m_video->index ||
            (m_audio && packet->stream_index == m_audio->index)) {
            stampPacket(packet);
            return Result::kPacket;
        }
        av_packet_unref(packet);
    }
    return Result::kFailed;
}

// Elementary streams carry no times: theirs are counted.
void MediaSource::stampPacket(AVPacket* packet) {
    const bool isVideo = packet->stream_index == m_video->index;
    const AVStream& stream = isVideo ? *m_video : *m_audio;
    int64_t& endUs = isVideo ? m_videoEndUs : m_audioEndUs;
    const int64_t duration = durationUs(*packet, stream);
    if (packet->pts == AV_NOPTS_VALUE && packet->dts == AV_NOPTS_VALUE) {
        packet->pts = packet->dts = endUs;
    } else {
        const auto inUs = [&](int64_t time) {
            return av_rescale_q(time, stream.time_base, kMicroseconds) + m_offsetUs;
        };
        const int64_t dts = packet->dts == AV_NOPTS_VALUE ? packet->pts : packet->dts;
        packet->pts = inUs(packet->pts == AV_NOPTS_VALUE ? dts : packet->pts);
        packet->dts = inUs(dts);
    }
    if (m_firstUs == AV_NOPTS_VALUE)
        m_firstUs = packet->dts - m_offsetUs;
    endUs = packet->dts + duration;
    m_isPassEmpty = false;
}

// The next pass begins where the longer stream of this one ended.
bool MediaSource::rewind() {
    m_isPassEmpty = true;
    const int64_t endUs = std::max(m_videoEndUs, m_audioEndUs);
    const int64_t start = m_format->start_time == AV_NOPTS_VALUE ? 0 : m_format->start_time;
    if (av_seek_frame(m_format.get(), -1, start, AVSEEK_FLAG_BACKWARD) < 0 &&
        av_seek_frame(m_format.get(), -1, 0, AVSEEK_FLAG_BYTE) < 0)
        return false;
    m_offsetUs = endUs - m_firstUs;
    m_videoEndUs = m_audioEndUs = endUs;
    return true;
}

}  // namespace orvelle
