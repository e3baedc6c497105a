#include "media/player_recorder.h"

#include <QtDebug>

#include "frames/parameter_sets.h"
#include "media/base_player_decoder.h"
#include "media/base_player_input.h"
#include "media/media_log.h"
#include "media/recording_file.h"

using orvelle::RecordingFile;
using orvelle::StreamParameters;

namespace {

/// About a minute of a camera's packets: a disk that stands still longer has failed.
constexpr int kMaxPackets = 4096;
constexpr int64_t kMaxBytes = int64_t{64} << 20;
constexpr int kWaitMs = 1000;
/// The decoder needs a moment for the first key frame of a stream that has only just begun.
constexpr int kParameterTries = 100;
constexpr int kParameterStepMs = 10;

bool isVideo(const KvBasePlayerInputPacket& packet) {
    return packet.mediaType() == KvBasePlayerInputPacket::kVideo;
}

bool needsParameterSets(int codecId) {
    return codecId == AV_CODEC_ID_H264 || codecId == AV_CODEC_ID_HEVC;
}

bool hasBytes(const KvBasePlayerInputPacket& packet) {
    return packet.packet() && packet.packet()->size > 0;
}

}  // namespace

KvPlayerRecoderThread::KvPlayerRecoderThread(KvPlayerRecorder* recorder)
    : KvThread(QStringLiteral("recorder")), m_recorder(recorder) {}

void KvPlayerRecoderThread::run() {
    m_recorder->record(*this);
}

KvPlayerRecorder::KvPlayerRecorder(KvBasePlayerInput* input, KvBasePlayerDecoder* decoder)
    : m_input(input), m_decoder(decoder) {}

KvPlayerRecorder::~KvPlayerRecorder() {
    stop();
}

void KvPlayerRecorder::setCallback(void* user, EventCallback callback) {
    m_user = user;
    m_callback = callback;
}

void KvPlayerRecorder::configure(const QString& path, const QString& formatName,
                                 double /*limitSeconds*/) {
    std::lock_guard<std::mutex> lock(m_pathMutex);
    m_path = path;
    m_formatName = formatName;
}

QString KvPlayerRecorder::path() const {
    std::lock_guard<std::mutex> lock(m_pathMutex);
    return m_path;
}

int KvPlayerRecorder::start() {
    if (!m_input || !m_decoder || m_thread)
        return -1;
    m_packets = std::make_unique<PacketQueue>();
    m_thread = std::make_unique<KvPlayerRecoderThread>(this);
    m_thread->start(QThread::InheritPriority);
    return 0;
}

void KvPlayerRecorder::requestStop() {
    if (!m_thread)
        return;
    m_thread->stop();
    m_packets->interrupt();
}

void KvPlayerRecorder::stop() {
    requestStop();
    KvThread::stopAndDelete(m_thread);
    m_packets.reset();
}

bool KvPlayerRecorder::isRecording() const {
    return !KvThread::isThreadStopped(m_thread.get());
}

void KvPlayerRecorder::onPacket(void* user, KvBasePlayerInputPacket* packet) {
    static_cast<KvPlayerRecorder*>(user)->tap(*packet);
}

void KvPlayerRecorder::tap(const KvBasePlayerInputPacket& packet) {
    const bool isKnown = isVideo(packet) || packet.mediaType() == KvBasePlayerInputPacket::kAudio;
    if (!isKnown || !hasBytes(packet))
        return;
    const bool hasRoom = m_packets->size() < kMaxPackets && m_queuedBytes < kMaxBytes;
    auto copy = hasRoom ? packet.deepCopy() : nullptr;
    if (!copy) {
        m_isOverrun = true;
        return;
    }
    m_queuedBytes += copy->packet()->size;
    m_packets->put(std::move(copy));
}

void KvPlayerRecorder::record(KvThread& thread) {
    qDebug("KvPlayerRecorder doRecord");
    RecordingFile file;
    m_input->setPacketCallback(this, &KvPlayerRecorder::onPacket);
    Outcome outcome = copyPackets(thread, file);
    qDebug("input set callback null");
    m_input->setPacketCallback(nullptr, nullptr);
    qDebug("uninit record");
    if (file.close() < 0)
        outcome = Outcome::kSpoiled;
    // Whoever hears of the end, on whatever thread, finds that nothing is being recorded.
    thread.stop();
    qDebug("docallback");
    if (outcome != Outcome::kStopped)
        notify(kFailed);
    if (outcome != Outcome::kNotBegun)
        notify(kEnded);
    qDebug("record thread ended");
}

KvPlayerRecorder::Outcome KvPlayerRecorder::copyPackets(KvThread& thread, RecordingFile& file) {
    while (!thread.isStopped()) {
        std::unique_ptr<KvBasePlayerInputPacket> packet = m_packets->take();
        if (!packet) {
            m_packets->waitForItem(kWaitMs);
            continue;
        }
        m_queuedBytes -= packet->packet()->size;
        if (!file.isOpen()) {
            if (!isVideo(*packet))
                m_soundSample = std::move(packet);
            if (!packet || !packet->isKey())
                continue;
            if (begin(thread, file, *packet) < 0)
                return thread.isStopped() ? Outcome::kStopped : Outcome::kNotBegun;
            notify(kCreated);
        }
        const int result = write(file, *packet);
        if (result < 0) {
            qDebug("write packet failed = %d break", result);
            return Outcome::kSpoiled;
        }
    }
    return Outcome::kStopped;
}

int KvPlayerRecorder::begin(KvThread& thread, RecordingFile& file,
                            const KvBasePlayerInputPacket& keyPacket) {
    const AVPacket& bytes = *keyPacket.packet();
    const std::vector<uint8_t> sets = orvelle::parameterSets(
        static_cast<AVCodecID>(keyPacket.codecId()), bytes.data, static_cast<size_t>(bytes.size));
    StreamParameters video = awaitVideo(thread, keyPacket.codecId(), sets);
    if (!video) {
        qCWarning(lcMedia, "no recording: the picture is not being decoded");
        return AVERROR(EAGAIN);
    }
    if (!sets.empty() && !orvelle::setExtradata(*video.codec, sets))
        return AVERROR(ENOMEM);
    if (!video.codec->extradata && needsParameterSets(keyPacket.codecId())) {
        qCWarning(lcMedia, "no recording: the stream has no parameter sets");
        return AVERROR_INVALIDDATA;
    }
    const StreamParameters sound = m_decoder->audioParameters();
    awaitSoundSample(thread, sound);
    const int result = file.create(path(), m_formatName, video, sound, m_soundSample.get());
    if (result < 0)
        return result;
    std::lock_guard<std::mutex> lock(m_pathMutex);
    m_path = file.path();
    m_hasFile = true;
    return 0;
}

StreamParameters KvPlayerRecorder::awaitVideo(KvThread& thread, int codecId,
                                              const std::vector<uint8_t>& sets) {
    StreamParameters video;
    for (int tries = 0; tries < kParameterTries; ++tries) {
        video = m_decoder->videoParameters();
        const bool isSameCodec = video && video.codec->codec_id == codecId;
        if (isSameCodec && (sets.empty() || orvelle::hasExtradata(*video.codec, sets)))
            break;
        if (!isSameCodec)
            video = {};
        if (thread.sleepUnlessStopped(kParameterStepMs))
            break;
    }
    return video;
}

void KvPlayerRecorder::awaitSoundSample(KvThread& thread, const StreamParameters& sound) {
    if (!sound || sound.codec->codec_id != AV_CODEC_ID_AAC)
        return;
    for (int tries = 0; !m_soundSample && tries < kParameterTries; ++tries) {
        m_soundSample = copyQueuedSound();
        if (!m_soundSample && thread.sleepUnlessStopped(kParameterStepMs))
            break;
    }
}

std::unique_ptr<KvBasePlayerInputPacket> KvPlayerRecorder::copyQueuedSound() const {
    std::unique_ptr<KvBasePlayerInputPacket> copy;
    m_packets->lock();
    for (const KvQueue::Node* node = m_packets->headNode(); node && !copy; node = node->next) {
        const auto* packet = static_cast<const KvBasePlayerInputPacket*>(node->item);
        if (!isVideo(*packet))
            copy = packet->deepCopy();
    }
    m_packets->unlock();
    return copy;
}

int KvPlayerRecorder::write(RecordingFile& file, KvBasePlayerInputPacket& packet) {
    if (m_isOverrun) {
        qCWarning(lcMedia, "the disk does not keep up with the recording");
        return AVERROR(EIO);
    }
    if (!isVideo(packet))
        return file.writeSound(packet);
    const int result = file.writeVideo(packet);
    notify(kProgress, file.recordedSec(), -1.0);
    return result;
}

void KvPlayerRecorder::notify(Event event, double a, double b) {
    if (m_callback)
        m_callback(m_user, event, a, b);
}
