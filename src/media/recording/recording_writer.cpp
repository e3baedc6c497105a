#include "media/recording/recording_writer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "frames/parameter_sets.h"
#include "media/media_log.h"
#include "media/stages/adts_filter.h"

namespace orvelle {

namespace {

/// The decoder needs a moment for a stream that has only just begun, and sound comes some packets
/// at a time.
constexpr double kMaxWaitSec = 1.0;
/// A camera that changes its codecs without end must not fill the disk with files.
constexpr int kMaxFiles = 100;

std::vector<uint8_t> setsOf(const KvBasePlayerInputPacket& packet) {
    return parameterSets(static_cast<AVCodecID>(packet.codecId()), packet.packet()->data,
                         static_cast<size_t>(packet.packet()->size));
}

uint32_t soundFormatOf(const KvBasePlayerInputPacket& packet) {
    return packet.codecId() == AV_CODEC_ID_AAC ? AdtsFilter::formatOf(*packet.packet()) : 0;
}

bool needsParameterSets(int codecId) {
    return codecId == AV_CODEC_ID_H264 || codecId == AV_CODEC_ID_HEVC;
}

}  // namespace

RecordingWriter::RecordingWriter(RecordingSource& source, const QString& path,
                                 const QString& formatName, Events events)
    : m_source(source), m_path(path), m_formatName(formatName), m_events(std::move(events)) {}

int RecordingWriter::write(std::unique_ptr<Packet> packet) {
    m_group.add(*packet);
    if (!m_file)
        return take(std::move(packet));
    if (belongsElsewhere(*packet))
        return beginNext(*packet);
    return put(*packet);
}

bool RecordingWriter::belongsElsewhere(const Packet& packet) const {
    return packet.isVideo() ? packet.isKey() && isOtherPicture(packet) : isOtherSound(packet);
}

bool RecordingWriter::isOtherPicture(const Packet& packet) const {
    if (packet.codecId() != m_videoId)
        return true;
    const std::vector<uint8_t> sets = setsOf(packet);
    return !sets.empty() && sets != m_parameterSets;
}

/// Sound that nobody can decode is left out rather than given a file.
bool RecordingWriter::isOtherSound(const Packet& packet) const {
    if (isSoundOfFile(packet))
        return false;
    const StreamParameters known = m_source.audioParameters();
    return known && known.codec->codec_id == packet.codecId() && !m_group.packets().empty();
}

bool RecordingWriter::isSoundOfFile(const Packet& packet) const {
    return packet.codecId() == m_soundId &&
           m_soundFormat.value_or(soundFormatOf(packet)) == soundFormatOf(packet);
}

/// The group holds the packet that called for it.
int RecordingWriter::beginNext(const Packet& packet) {
    const int result = closeFile();
    if (result < 0)
        return result;
    if (m_files.size() >= kMaxFiles) {
        qCWarning(lcMedia, "recording ends: the stream changes too often");
        return AVERROR(EMFILE);
    }
    const double ageSec = packet.time() - m_group.packets().front()->time();
    m_begunAt = QDateTime::currentDateTimeUtc().addMSecs(-std::llround(1000 * ageSec));
    m_sincePending.start();
    for (const auto& kept : m_group.packets()) {
        if (auto copy = kept->reference())
            m_pending.push_back(std::move(copy));
    }
    return isReady() ? begin() : 0;
}

int RecordingWriter::take(std::unique_ptr<Packet> packet) {
    const bool isKey = packet->isVideo() && packet->isKey();
    // A change so early leaves nothing of the stream before.
    if (isKey && !m_pending.empty() &&
        (packet->codecId() != m_pending.front()->codecId() ||
         setsOf(*packet) != setsOf(*m_pending.front())))
        m_pending.clear();
    if (m_pending.empty()) {
        if (!isKey)
            return 0;
        m_sincePending.start();
    }
    m_pending.push_back(std::move(packet));
    return isReady() ? begin() : 0;
}

/// A player that is muted asks for sound only now, so the clock alone says that there is none.
bool RecordingWriter::isReady() {
    const bool isLate = m_sincePending.elapsed() > static_cast<qint64>(kMaxWaitSec * 1000);
    if (isLate)
        return true;
    return isVideoKnown(*m_pending.front()) && pendingSound() && isSoundKnown();
}

bool RecordingWriter::isVideoKnown(const Packet& key) {
    const StreamParameters video = m_source.videoParameters();
    const std::vector<uint8_t> sets = setsOf(key);
    return video && video.codec->codec_id == key.codecId() &&
           (sets.empty() || hasExtradata(*video.codec, sets));
}

bool RecordingWriter::isSoundKnown() const {
    const StreamParameters sound = m_source.audioParameters();
    return sound && sound.codec->codec_id == pendingSound()->codecId();
}

/// The newest sound, as that before a change of codecs belongs to the former file.
const KvBasePlayerInputPacket* RecordingWriter::pendingSound() const {
    const auto sound = std::find_if(m_pending.rbegin(), m_pending.rend(),
                                    [](const auto& packet) { return !packet->isVideo(); });
    return sound == m_pending.rend() ? nullptr : sound->get();
}

int RecordingWriter::begin() {
    int result = create(*m_pending.front());
    if (result < 0)
        return result;
    m_hasBegun = true;
    m_files.append(m_file->path());
    m_events.created(m_file->path());
    for (auto pending = std::move(m_pending); result >= 0 && !pending.empty(); pending.pop_front())
        result = put(*pending.front());
    m_pending.clear();
    return result;
}

int RecordingWriter::create(const Packet& key) {
    StreamParameters video = m_source.videoParameters();
    if (!video || video.codec->codec_id != key.codecId()) {
        qCWarning(lcMedia, "no recording: the picture is not being decoded");
        return AVERROR(EAGAIN);
    }
    m_videoId = key.codecId();
    m_parameterSets = setsOf(key);
    if (!m_parameterSets.empty() && !setExtradata(*video.codec, m_parameterSets))
        return AVERROR(ENOMEM);
    if (!video.codec->extradata && needsParameterSets(m_videoId)) {
        qCWarning(lcMedia, "no recording: the stream has no parameter sets");
        return AVERROR_INVALIDDATA;
    }
    const Packet* sample = pendingSound();
    StreamParameters sound = m_source.audioParameters();
    if (sample && sound && sound.codec->codec_id != sample->codecId())
        sound = {};
    auto file = std::make_unique<RecordingFile>();
    const int result = file->create(m_path, m_formatName, video, sound, sample, m_begunAt);
    if (result < 0)
        return result;
    m_file = std::move(file);
    m_soundId = sound ? sound.codec->codec_id : -1;
    m_soundFormat.reset();
    if (sample && sound)
        m_soundFormat = soundFormatOf(*sample);
    m_lacksSound = false;
    m_fileCameraSec = key.time();
    return 0;
}

int RecordingWriter::put(Packet& packet) {
    if (!packet.isVideo()) {
        m_lacksSound = !m_file->hasSound();
        if (!isSoundOfFile(packet))
            return 0;
        m_soundFormat = soundFormatOf(packet);
        return m_file->writeSound(packet);
    }
    // A picture of another codec that no key picture has announced.
    if (packet.codecId() != m_videoId)
        return 0;
    const int result = m_file->writeVideo(packet);
    m_events.pictureWritten(m_formerSec + m_file->recordedSec());
    return result;
}

int RecordingWriter::closeFile() {
    if (!m_file)
        return 0;
    const int result = m_file->close();
    if (!m_file->isKept())
        m_files.removeLast();
    // The next one begins with the group that runs, which the former holds as well.
    const double stepSec =
        m_group.packets().empty() ? 0.0 : m_group.packets().front()->time() - m_fileCameraSec;
    const double recordedSec = m_file->recordedSec();
    m_formerSec += stepSec >= 0.0 && stepSec <= recordedSec + kMaxWaitSec ? stepSec : recordedSec;
    m_file.reset();
    return result;
}

int RecordingWriter::close() {
    int result = 0;
    if (!m_file && !m_pending.empty())
        result = begin();
    // Nothing was decoded yet, so nothing was seen either.
    if (!m_hasBegun && result == AVERROR(EAGAIN))
        result = 0;
    const int end = closeFile();
    return result < 0 ? result : end;
}

}  // namespace orvelle
