#include "media/recording/recording_file.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/log.h"
#include "frames/input_packet.h"
#include "media/media_log.h"

namespace orvelle {

namespace {

constexpr AVRational kTimeBase = {1, 90000};
/// Where the opening key picture stands, as no packet may stand at the origin itself.
constexpr int64_t kOpeningTicks = 1;
/// How long a track waits in memory for the other one before it is written alone.
constexpr int64_t kInterleaveUs = 500 * 1000;
/// A fragment ends with a group of pictures, or after this time where groups are longer: what is
/// in no fragment yet is lost when the program is killed.
constexpr char kFragmentUs[] = "500000";
/// Without an index of its own at the end, which the finished file has no use for. Fragments keep
/// the tracks' times as they are, so that sound which begins later stays later.
constexpr char kFragmentFlags[] =
    "frag_keyframe+empty_moov+default_base_moof+frag_discont+skip_trailer";
/// The lowest rate of MP3 in these files; less belongs to a later version of the format.
constexpr int kMinMp3Rate = 16000;

/// The decoder's own time base where it resolves the camera's milliseconds.
AVRational timeBaseFor(const StreamParameters& source) {
    const AVRational own = source.timeBase;
    return own.num > 0 && own.den / own.num >= 1000 ? own : kTimeBase;
}

bool isFragmented(const QString& formatName) {
    return formatName == QLatin1String("mp4") || formatName == QLatin1String("mov");
}

bool advances(int64_t& lastTicks, int64_t ticks) {
    // Compared in ticks: muxers refuse a time that rose by less than one.
    const bool isLater = ticks > lastTicks;
    lastTicks = std::max(lastTicks, ticks);
    return isLater;
}

void traceSound(const AVStream& stream, const AVPacket& stamped, double cameraSec) {
    qCDebug(
        lcDebug,
        "write audio pts = %lld, frame_size = %d, duration = %lld, time = %.2lf, srcTime = %.3lf",
        static_cast<long long>(stamped.pts), stream.codecpar->frame_size,
        static_cast<long long>(stamped.duration),
        static_cast<double>(stamped.pts) * av_q2d(stream.time_base), cameraSec);
}

}  // namespace

RecordingFile::RecordingFile() = default;

RecordingFile::~RecordingFile() {
    close();
}

int RecordingFile::create(const QString& path, const QString& formatName,
                          const StreamParameters& video, const StreamParameters& sound,
                          const KvBasePlayerInputPacket* soundSample, const QDateTime& begunAt) {
    AVFormatContext* format = nullptr;
    int result = avformat_alloc_output_context2(&format, nullptr, formatName.toUtf8().constData(),
                                                path.toUtf8().constData());
    if (result < 0)
        return result;
    m_format.reset(format);
    m_format->max_interleave_delta = kInterleaveUs;
    m_format->flush_packets = 1;
    // No time is negative, and none may be moved: a track that begins later has to stay later.
    m_format->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
    av_dict_set(&m_format->metadata, "creation_time",
                begunAt.toUTC().toString(Qt::ISODateWithMs).toLatin1().constData(), 0);
    m_hasFragments = isFragmented(formatName);
    result = addVideo(video);
    if (result >= 0) {
        addSound(sound, soundSample);
        result = openFile(path);
    }
    if (result < 0)
        release();
    return result;
}

int RecordingFile::addVideo(const StreamParameters& video) {
    if (!video || !canHold(video.codec->codec_id)) {
        qCWarning(lcMedia, "no recording: %s holds no %s", m_format->oformat->name,
                  avcodec_get_name(video ? video.codec->codec_id : AV_CODEC_ID_NONE));
        return AVERROR(EINVAL);
    }
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

void RecordingFile::addSound(const StreamParameters& sound, const KvBasePlayerInputPacket* sample) {
    if (!sound)
        return;
    m_soundId = sound.codec->codec_id;
    qDebug("audioContext->time_base = %d / %d", sound.timeBase.num, sound.timeBase.den);
    qDebug("audio codec->name = %s", avcodec_get_name(sound.codec->codec_id));
    const StreamParameters track = chooseSound(sound, sample);
    if (track && track.codec->sample_rate > 0)
        m_sound.stream = addStream(track);
    if (!m_sound.stream)
        qCWarning(lcMedia, "recording without sound: %s holds no %s", m_format->oformat->name,
                  avcodec_get_name(sound.codec->codec_id));
}

StreamParameters RecordingFile::chooseSound(const StreamParameters& sound,
                                            const KvBasePlayerInputPacket* sample) {
    StreamParameters track;
    if (canCopySound(*sound.codec) && m_soundId != AV_CODEC_ID_AAC)
        track = sound.copy();
    else if (canCopySound(*sound.codec) && sample && sample->codecId() == m_soundId)
        track = m_adts.open(sound, *sample->packet());
    if (!track && canHold(AV_CODEC_ID_AAC))
        track = m_encoder.open(sound);
    return track;
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

bool RecordingFile::canCopySound(const AVCodecParameters& sound) const {
    if (!canHold(sound.codec_id) || sound.sample_rate <= 0)
        return false;
    // Fragments of other sound hold single samples, which no player seeks in.
    return !m_hasFragments || sound.codec_id == AV_CODEC_ID_AAC ||
           (sound.codec_id == AV_CODEC_ID_MP3 && sound.sample_rate >= kMinMp3Rate);
}

int RecordingFile::openFile(const QString& path) {
    using Layout = RecordingSink::Layout;
    m_sink = std::make_unique<RecordingSink>();
    int result = m_sink->create(path, m_hasFragments ? Layout::kFragments : Layout::kPlain);
    if (result < 0) {
        qDebug("avio_open < 0");
        return result;
    }
    m_path = m_sink->path();
    m_format->pb = m_sink->io();
    result = writeHeader();
    if (result < 0) {
        qDebug() << "avformat_write_header, path =" << m_path;
        m_sink->discard();
    }
    return result;
}

int RecordingFile::writeHeader() {
    AVDictionary* options = nullptr;
    if (m_hasFragments) {
        av_dict_set(&options, "movflags", kFragmentFlags, 0);
        av_dict_set(&options, "frag_duration", kFragmentUs, 0);
    }
    const int result = avformat_write_header(m_format.get(), &options);
    av_dict_free(&options);
    avio_flush(m_sink->io());
    return result < 0 ? result : m_sink->error();
}

int RecordingFile::writeVideo(KvBasePlayerInputPacket& packet) {
    if (!m_video.stream || packet.codecId() != m_video.stream->codecpar->codec_id)
        return AVERROR(EINVAL);
    if (!m_video.clock.isStarted()) {
        m_video.clock.start(packet.time(), 0.0);
        m_opening.reset(av_packet_clone(packet.packet()));
        return m_opening ? 0 : AVERROR(ENOMEM);
    }
    bool isWritten = stamp(m_video, packet);
    if (isWritten && m_opening) {
        const int result = writeOpening();
        if (result < 0)
            return result;
        isWritten = packet.packet()->pts > kOpeningTicks;
    }
    const AVPacket& stamped = *packet.packet();
    qCDebug(lcDebug, "write video pts = %lld, duration = %lld, time = %.2lf, srcTime = %.3lf",
            static_cast<long long>(stamped.pts), static_cast<long long>(stamped.duration),
            static_cast<double>(stamped.pts) * av_q2d(m_video.stream->time_base), packet.time());
    return isWritten ? hold(m_video, *packet.packet()) : 0;
}

int RecordingFile::writeOpening() {
    m_opening->stream_index = m_video.stream->index;
    m_opening->pts = m_opening->dts = kOpeningTicks;
    const int result = hold(m_video, *m_opening);
    m_opening.reset();
    return result;
}

int RecordingFile::writeSound(KvBasePlayerInputPacket& packet) {
    if (!m_sound.stream || packet.codecId() != m_soundId)
        return 0;
    if (!m_sound.clock.isStarted() && !startSound(packet.time()))
        return 0;
    if (m_encoder.isOpen()) {
        const double cameraSec = packet.time();
        return m_encoder.push(
            *packet.packet(), m_sound.clock.place(cameraSec, m_video.clock),
            [this, cameraSec](AVPacket& encoded) { return writeEncoded(encoded, cameraSec); });
    }
    if (m_adts.isOpen() && !m_adts.apply(*packet.packet()))
        return 0;
    const bool isWritten = stamp(m_sound, packet);
    traceSound(*m_sound.stream, *packet.packet(), packet.time());
    return isWritten ? hold(m_sound, *packet.packet()) : 0;
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

int RecordingFile::writeEncoded(AVPacket& packet, double cameraSec) {
    packet.stream_index = m_sound.stream->index;
    av_packet_rescale_ts(&packet, {1, m_encoder.sampleRate()}, m_sound.stream->time_base);
    packet.dts = packet.pts;
    traceSound(*m_sound.stream, packet, cameraSec);
    return advances(m_sound.lastTicks, packet.pts) ? hold(m_sound, packet) : 0;
}

bool RecordingFile::stamp(Track& track, const KvBasePlayerInputPacket& packet) {
    const double tickSec = av_q2d(track.stream->time_base);
    const double formerSec = track.clock.lineSec();
    const Track& other = &track == &m_video ? m_sound : m_video;
    const double lineSec = track.clock.place(packet.time(), other.clock);
    AVPacket& stamped = *packet.packet();
    stamped.stream_index = track.stream->index;
    stamped.pts = stamped.dts = static_cast<int64_t>(lineSec / tickSec);
    stamped.duration = static_cast<int64_t>((lineSec - formerSec) / tickSec);
    return advances(track.lastTicks, stamped.pts);
}

int RecordingFile::hold(Track& track, AVPacket& packet) {
    if (!track.held)
        track.held.reset(av_packet_alloc());
    if (!track.held)
        return AVERROR(ENOMEM);
    AVPacket& held = *track.held;
    int result = 0;
    if (held.data) {
        held.duration = packet.pts - held.pts;
        result = write(held);
    }
    av_packet_unref(&held);
    av_packet_move_ref(&held, &packet);
    return result;
}

int RecordingFile::write(AVPacket& packet) {
    const int result = av_interleaved_write_frame(m_format.get(), &packet);
    m_sink->syncWhenDue();
    if (m_sink->error() < 0)
        return m_sink->error();
    if (result != AVERROR_INVALIDDATA)
        return result;
    // Garbage from the camera: the packet is lost, not the file.
    if (!std::exchange(m_hasRefused, true))
        qCWarning(lcMedia, "recording leaves out packets that the format cannot hold");
    return 0;
}

int RecordingFile::writeHeld(Track& track) {
    return track.held && track.held->data ? write(*track.held) : 0;
}

int RecordingFile::close() {
    if (!m_format)
        return 0;
    int ends[4] = {};
    if (m_encoder.isOpen())
        ends[0] = m_encoder.drain([this](AVPacket& encoded) { return writeEncoded(encoded, 0.0); });
    ends[1] = writeHeld(m_video);
    ends[2] = writeHeld(m_sound);
    ends[3] = av_write_trailer(m_format.get());
    // The trailer may well report success after the disk has refused a write.
    const int result = m_sink->finish();
    // Only the opening picture came, if any.
    if (!m_video.clock.isStarted() || m_opening)
        m_sink->discard();
    m_isKept = m_sink->isKept();
    release();
    const int* failed = std::find_if(std::begin(ends), std::end(ends), [](int e) { return e < 0; });
    return result < 0 || failed == std::end(ends) ? result : *failed;
}

void RecordingFile::discard() {
    if (!m_format)
        return;
    m_sink->discard();
    release();
}

void RecordingFile::release() {
    // The buffer is the sink's, and no file of the muxer's own.
    m_format->pb = nullptr;
    m_format.reset();
    m_sink.reset();
    m_video.stream = nullptr;
    m_sound.stream = nullptr;
}

}  // namespace orvelle
