#include "media/recording_file.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <utility>

#include "frames/input_packet.h"
#include "media/media_log.h"

namespace orvelle {

namespace {

constexpr AVRational kTimeBase = {1, 90000};
/// How long a track waits in memory for the other one before it is written alone.
constexpr int64_t kInterleaveUs = 1000 * 1000;
constexpr int kMostNames = 1000;

/// The decoder's own time base where it resolves the camera's milliseconds.
AVRational timeBaseFor(const StreamParameters& source) {
    const AVRational own = source.timeBase;
    return own.num > 0 && own.den / own.num >= 1000 ? own : kTimeBase;
}

QString numbered(const QFileInfo& file, int number) {
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    return file.path() + QLatin1Char('/') + file.completeBaseName() + QLatin1Char('-') +
           QString::number(number) + suffix;
}

/// Creates the file empty, so that no other recording takes the same name; empty when it cannot.
QString reserveName(const QString& path) {
    for (int number = 1; number <= kMostNames; ++number) {
        const QString name = number == 1 ? path : numbered(QFileInfo(path), number);
        if (QFile(name).open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return name;
        if (!QFileInfo::exists(name))
            break;
    }
    return {};
}

}  // namespace

RecordingFile::~RecordingFile() {
    close();
}

int RecordingFile::create(const QString& path, const QString& formatName,
                          const StreamParameters& video, const StreamParameters& sound) {
    AVFormatContext* format = nullptr;
    int result = avformat_alloc_output_context2(&format, nullptr, formatName.toUtf8().constData(),
                                                path.toUtf8().constData());
    if (result < 0)
        return result;
    m_format.reset(format);
    m_format->max_interleave_delta = kInterleaveUs;
    result = addVideo(video);
    if (result >= 0) {
        addSound(sound);
        result = openFile(path);
    }
    if (result < 0)
        m_format.reset();
    return result;
}

int RecordingFile::addVideo(const StreamParameters& video) {
    if (!video || !canHold(video.codec->codec_id))
        return AVERROR(EINVAL);
    qDebug("videoContent->time_base = %d / %d", video.timeBase.num, video.timeBase.den);
    qDebug("video codec->name = %s", avcodec_get_name(video.codec->codec_id));
    m_video.stream = addStream(video);
    if (!m_video.stream)
        return AVERROR(ENOMEM);
    // Apple's players open HEVC under this name alone; it asks for parameter sets in the header.
    if (video.codec->codec_id == AV_CODEC_ID_HEVC)
        m_video.stream->codecpar->codec_tag = MKTAG('h', 'v', 'c', '1');
    return 0;
}

void RecordingFile::addSound(const StreamParameters& sound) {
    if (!sound)
        return;
    qDebug("audioContext->time_base = %d / %d", sound.timeBase.num, sound.timeBase.den);
    qDebug("audio codec->name = %s", avcodec_get_name(sound.codec->codec_id));
    if (canHold(sound.codec->codec_id) && sound.codec->sample_rate > 0)
        m_sound.stream = addStream(sound);
    if (!m_sound.stream)
        qCWarning(lcMedia, "recording without sound: %s holds no %s", m_format->oformat->name,
                  avcodec_get_name(sound.codec->codec_id));
}

AVStream* RecordingFile::addStream(const StreamParameters& source) {
    AVStream* stream = avformat_new_stream(m_format.get(), nullptr);
    if (!stream || avcodec_parameters_copy(stream->codecpar, source.codec.get()) < 0)
        return nullptr;
    stream->id = static_cast<int>(m_format->nb_streams) - 1;
    stream->time_base = timeBaseFor(source);
    stream->sample_aspect_ratio = stream->codecpar->sample_aspect_ratio;
    stream->codecpar->codec_tag = 0;
    return stream;
}

bool RecordingFile::canHold(AVCodecID codec) const {
    return avformat_query_codec(m_format->oformat, codec, FF_COMPLIANCE_NORMAL) == 1;
}

int RecordingFile::openFile(const QString& path) {
    m_path = reserveName(path);
    if (m_path.isEmpty()) {
        qDebug("avio_open < 0");
        return AVERROR(EACCES);
    }
    // The prefix keeps a name with a colon from being taken for an address.
    const QByteArray url = "file:" + m_path.toUtf8();
    int result = avio_open(&m_format->pb, url.constData(), AVIO_FLAG_WRITE);
    if (result < 0) {
        qDebug("avio_open < 0");
    } else {
        result = avformat_write_header(m_format.get(), nullptr);
        if (result < 0)
            qDebug() << "avformat_write_header, path =" << m_path;
    }
    if (result < 0) {
        avio_closep(&m_format->pb);
        QFile::remove(m_path);
    }
    return result;
}

int RecordingFile::writeVideo(KvBasePlayerInputPacket& packet) {
    if (!m_video.stream || packet.codecId() != m_video.stream->codecpar->codec_id)
        return AVERROR(EINVAL);
    if (!m_video.clock.isStarted())
        m_video.clock.start(packet.time(), 0.0);
    const bool advances = stamp(m_video, packet);
    const AVPacket& stamped = *packet.packet();
    qDebug("write video pts = %lld, duration = %lld, time = %.2lf, srcTime = %.3lf",
           static_cast<long long>(stamped.pts), static_cast<long long>(stamped.duration),
           static_cast<double>(stamped.pts) * av_q2d(m_video.stream->time_base), packet.time());
    return advances ? write(*packet.packet()) : 0;
}

int RecordingFile::writeSound(KvBasePlayerInputPacket& packet) {
    if (!m_sound.stream || packet.codecId() != m_sound.stream->codecpar->codec_id)
        return 0;
    if (!m_sound.clock.isStarted() && !startSound(packet.time()))
        return 0;
    const bool advances = stamp(m_sound, packet);
    const AVPacket& stamped = *packet.packet();
    qDebug(
        "write audio pts = %lld, frame_size = %d, duration = %lld, time = %.2lf, srcTime = %.3lf",
        static_cast<long long>(stamped.pts), m_sound.stream->codecpar->frame_size,
        static_cast<long long>(stamped.duration),
        static_cast<double>(stamped.pts) * av_q2d(m_sound.stream->time_base), packet.time());
    return advances ? write(*packet.packet()) : 0;
}

bool RecordingFile::startSound(double cameraSec) {
    const RecordingClock& picture = m_video.clock;
    const bool isSameClock =
        std::abs(cameraSec - picture.cameraSec()) <= RecordingClock::kLongestStepSec;
    // Sound that is stamped by a clock of its own begins where the picture is now.
    const double lineSec = isSameClock ? cameraSec - picture.originSec() : picture.lineSec();
    if (lineSec < 0.0)
        return false;
    m_sound.clock.start(cameraSec, lineSec);
    return true;
}

bool RecordingFile::stamp(Track& track, const KvBasePlayerInputPacket& packet) {
    const double tickSec = av_q2d(track.stream->time_base);
    const double formerSec = track.clock.lineSec();
    const double lineSec = track.clock.place(packet.time());
    AVPacket& stamped = *packet.packet();
    stamped.stream_index = track.stream->index;
    stamped.pts = stamped.dts = static_cast<int64_t>(lineSec / tickSec);
    stamped.duration = static_cast<int64_t>((lineSec - formerSec) / tickSec);
    // Compared in ticks: muxers refuse a time that rose by less than one.
    const bool advances = stamped.pts > track.lastTicks;
    track.lastTicks = std::max(track.lastTicks, stamped.pts);
    return advances;
}

int RecordingFile::write(AVPacket& packet) {
    const int result = av_interleaved_write_frame(m_format.get(), &packet);
    if (result != AVERROR_INVALIDDATA)
        return result;
    // Garbage from the camera: the packet is lost, not the file.
    if (!std::exchange(m_hasRefused, true))
        qCWarning(lcMedia, "recording leaves out packets that the format cannot hold");
    return 0;
}

int RecordingFile::close() {
    if (!m_format)
        return 0;
    const int trailer = av_write_trailer(m_format.get());
    const int closed = avio_closep(&m_format->pb);
    m_format.reset();
    m_video.stream = nullptr;
    m_sound.stream = nullptr;
    return trailer < 0 ? trailer : std::min(closed, 0);
}

}  // namespace orvelle
