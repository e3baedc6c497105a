#include "media/player/player_decoder.h"

#include <algorithm>
#include <utility>

#include "frames/input_packet.h"
#include "frames/parameter_sets.h"
#include "frames/picture_role.h"
#include "media/stages/base_player_input.h"

using orvelle::OpenCodec;
using orvelle::PictureRole;

namespace {

/// Decoded pictures that may wait for the output: more would be delay.
constexpr int kMaxPictures = 3;
/// When more live sound waits than may, the oldest goes until so much is left, in seconds, which
/// keeps the device fed.
constexpr double kSoundLeftSec = 0.15;
/// Rounding of the times of a recording.
constexpr double kRoundingSec = 0.005;
/// Waits end by signals; this only bounds a missed one.
constexpr int kWaitMs = 1000;

/// An empty packet would tell FFmpeg that the stream has ended.
bool hasBytes(const KvBasePlayerInputPacket& packet) {
    return packet.packet() && packet.packet()->data && packet.packet()->size > 0;
}

bool isDamaged(const AVFrame& frame) {
    return frame.decode_error_flags != 0 || (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0;
}

double durationSec(const AVFrame& frame) {
    return frame.sample_rate > 0 ? static_cast<double>(frame.nb_samples) / frame.sample_rate : 0.0;
}

PictureRole roleOf(const KvBasePlayerInputPacket& packet) {
    const AVPacket& bytes = *packet.packet();
    return orvelle::pictureRole(static_cast<AVCodecID>(packet.codecId()), bytes.data,
                                static_cast<size_t>(bytes.size), packet.isKey());
}

int takeFrame(OwningQueue<KvBasePlayerDecoderFrame>* queue, KvBasePlayerDecoderFrame** frame) {
    *frame = queue ? queue->take().release() : nullptr;
    return *frame ? 0 : -1;
}

}  // namespace

KvPlayerDecoderVideoThread::KvPlayerDecoderVideoThread(KvPlayerDecoder* decoder)
    : KvPlayerDecoderThread(QStringLiteral("decode-video"), decoder) {}

void KvPlayerDecoderVideoThread::run() {
    m_decoder->decodeVideo(*this);
    stop();
    m_decoder->wakeReaders();
}

KvPlayerDecoderAudioThread::KvPlayerDecoderAudioThread(KvPlayerDecoder* decoder)
    : KvPlayerDecoderThread(QStringLiteral("decode-audio"), decoder) {}

void KvPlayerDecoderAudioThread::run() {
    m_decoder->decodeAudio(*this);
    stop();
    m_decoder->wakeReaders();
}

KvPlayerDecoder::KvPlayerDecoder(QObject* parent) : KvBasePlayerDecoder(parent) {}

KvPlayerDecoder::~KvPlayerDecoder() {
    stop();
}

int KvPlayerDecoder::start() {
    if (!input() || m_videoThread)
        return -1;
    m_videoFrames = std::make_unique<FrameQueue>();
    m_audioFrames = std::make_unique<FrameQueue>();
    m_video = std::make_unique<OpenCodec>(*input(), KvBasePlayerInput::kVideoKind);
    m_audio = std::make_unique<OpenCodec>(*input(), KvBasePlayerInput::kAudioKind);
    m_videoThread = std::make_unique<KvPlayerDecoderVideoThread>(this);
    m_audioThread = std::make_unique<KvPlayerDecoderAudioThread>(this);
    m_videoThread->start(QThread::InheritPriority);
    m_audioThread->start(QThread::InheritPriority);
    return 0;
}

void KvPlayerDecoder::requestStop() {
    if (!m_videoThread)
        return;
    m_videoThread->stop();
    m_audioThread->stop();
    m_videoFrames->interrupt();
    m_audioFrames->wake();
    input()->wakeReaders();
}

void KvPlayerDecoder::stop() {
    requestStop();
    KvThread::stopAndDelete(m_audioThread);
    KvThread::stopAndDelete(m_videoThread);
    m_audio.reset();
    m_video.reset();
    m_audioFrames.reset();
    m_videoFrames.reset();
}

AVCodecContext* KvPlayerDecoder::videoCodecContext() {
    return m_video ? m_video->context() : nullptr;
}

AVCodecContext* KvPlayerDecoder::audioCodecContext() {
    return m_audio ? m_audio->context() : nullptr;
}

int KvPlayerDecoder::readVideoFrame(KvBasePlayerDecoderFrame** frame) {
    return takeFrame(m_videoFrames.get(), frame);
}

int KvPlayerDecoder::readAudioFrame(KvBasePlayerDecoderFrame** frame) {
    return takeFrame(m_audioFrames.get(), frame);
}

void KvPlayerDecoder::releaseVideoFrame(KvBasePlayerDecoderFrame* frame) {
    delete frame;
}

void KvPlayerDecoder::releaseAudioFrame(KvBasePlayerDecoderFrame* frame) {
    delete frame;
}

bool KvPlayerDecoder::isRunning() {
    return !KvThread::isThreadStopped(m_videoThread.get()) ||
           !KvThread::isThreadStopped(m_audioThread.get());
}

void KvPlayerDecoder::flush() {
    m_keyFrameSeen = false;
    if (m_videoFrames)
        m_videoFrames->clear();
    if (m_audioFrames)
        m_audioFrames->clear();
}

bool KvPlayerDecoder::waitForVideoFrame(const KvThread& reader, int timeoutMs) {
    return m_videoFrames && m_videoFrames->waitForItem(
                                timeoutMs, [&] { return reader.isStopped() || !isRunning(); });
}

bool KvPlayerDecoder::waitForAudioFrame(const KvThread& reader, int timeoutMs) {
    return m_audioFrames && m_audioFrames->waitForItem(
                                timeoutMs, [&] { return reader.isStopped() || !isRunning(); });
}

void KvPlayerDecoder::wakeReaders() {
    if (m_videoFrames)
        m_videoFrames->wake();
    if (m_audioFrames)
        m_audioFrames->wake();
}

void KvPlayerDecoder::decodeVideo(const KvThread& thread) {
    m_keyFrameSeen = false;
    while (!thread.isStopped()) {
        if (!m_videoFrames->waitForSpace(kMaxPictures - 1, kWaitMs))
            continue;
        const bool moreMayCome = input()->isRunning();
        KvBasePlayerInputPacket* packet = nullptr;
        if (input()->readVideoPacket(&packet) == 0) {
            handleVideoPacket(*packet);
            input()->releaseVideoPacket(packet);
        } else if (moreMayCome) {
            input()->waitForVideoPacket(thread, kWaitMs);
        } else {
            break;
        }
    }
    m_video->close();
    m_videoParameters.clear();
}

void KvPlayerDecoder::handleVideoPacket(const KvBasePlayerInputPacket& packet) {
    if (!hasBytes(packet) || (!isCodecFor(packet) && !openVideo(packet)))
        return;
    const PictureRole role = roleOf(packet);
    if (packet.isKey())
        begin(packet, role == PictureRole::kFresh);
    if (packet.followsLoss())
        m_damage.begin(packet.time());
    if (m_keyPicturesOnly && !packet.isKey()) {
        // What is left out is missing to those that follow, from the last one on.
        m_damage.end();
        m_damage.begin(packet.time());
        return;
    }
    if (!m_keyFrameSeen)
        return;
    const int result = decodePicture(packet);
    m_videoErrors.note(result);
    if (packet.isKey() && result >= 0)
        m_videoParameters.publish(*m_video->context(), m_parameterSets);
    if (result < 0 && result != AVERROR(EAGAIN)) {
        stats().decodeErrors.fetch_add(1, std::memory_order_relaxed);
        // What refers to the picture that is missing now would look smeared.
        if (role != PictureRole::kDisposable)
            m_damage.begin(packet.time());
    }
}

void KvPlayerDecoder::begin(const KvBasePlayerInputPacket& packet, bool isFresh) {
    // Where a refresh only starts, what the codec has is better than nothing.
    if (!m_keyFrameSeen || (isFresh && m_damage.covers(packet.time())))
        m_video->reset();
    if (!m_keyFrameSeen || isFresh)
        m_damage.end();
    m_keyFrameSeen = true;
}

bool KvPlayerDecoder::isCodecFor(const KvBasePlayerInputPacket& packet) {
    const bool isSameCodec = m_video->isOpen(packet.codecId());
    if (isSameCodec && !packet.isKey())
        return true;
    const AVPacket& bytes = *packet.packet();
    std::vector<uint8_t> sets = orvelle::parameterSets(static_cast<AVCodecID>(packet.codecId()),
                                                       bytes.data, static_cast<size_t>(bytes.size));
    if (isSameCodec && (sets.empty() || sets == m_parameterSets))
        return true;
    // A codec that lives through a change keeps the largest reordering delay it has seen.
    m_parameterSets = std::move(sets);
    return false;
}

bool KvPlayerDecoder::openVideo(const KvBasePlayerInputPacket& packet) {
    m_keyFrameSeen = false;
    m_videoParameters.clear();
    return m_video->open(packet.codecId(), packet.isKey());
}

int KvPlayerDecoder::decodePicture(const KvBasePlayerInputPacket& packet) {
    int result = m_video->send(*packet.packet());
    if (result >= 0)
        result = m_video->receive();
    if (result < 0)
        return result;
    if (isDamaged(*m_video->frame()))
        result = AVERROR_INVALIDDATA;
    else
        passPicture(packet.time());
    // One picture a packet; one that holds more must not clog the codec.
    while (m_video->receive() >= 0) {
    }
    return result;
}

void KvPlayerDecoder::passPicture(double timeSec) {
    const AVFrame* picture = m_filter.accept(*m_video->frame());
    // A flush while it was being decoded made it worthless.
    if (!picture || !m_keyFrameSeen || timeSec < -kRoundingSec || m_damage.covers(timeSec))
        return;
    m_videoFrames->put(std::make_unique<KvBasePlayerDecoderFrame>(picture, timeSec));
    stats().picturesDecoded.fetch_add(1, std::memory_order_relaxed);
}

void KvPlayerDecoder::decodeAudio(const KvThread& thread) {
    while (!thread.isStopped()) {
        if (!waitForSoundSpace(thread))
            continue;
        const bool moreMayCome = input()->isRunning();
        KvBasePlayerInputPacket* packet = nullptr;
        if (input()->readAudioPacket(&packet) == 0) {
            handleAudioPacket(*packet);
            input()->releaseAudioPacket(packet);
        } else if (moreMayCome) {
            input()->waitForAudioPacket(thread, kWaitMs);
        } else {
            break;
        }
    }
    m_audio->close();
    forgetSound();
}

bool KvPlayerDecoder::waitForSoundSpace(const KvThread& thread) {
    if (input()->isLive())
        return true;
    const int most = std::max(2, static_cast<int>(kMaxSoundSec / m_soundFrameSec));
    return m_audioFrames->waitForSpace(most - 1, kWaitMs, [&] { return thread.isStopped(); });
}

void KvPlayerDecoder::forgetSound() {
    m_audioParameters.clear();
    m_knownSoundId = -1;
}

void KvPlayerDecoder::handleAudioPacket(const KvBasePlayerInputPacket& packet) {
    // A recording needs the parameters, also of a picture that is watched without sound.
    // Of a recording more waits in the queue than may be missing when it is wanted again.
    if (!m_isSoundWanted && input()->isLive() && packet.codecId() == m_knownSoundId) {
        m_audio->close();
        m_lastG726Bytes = 0;
        return;
    }
    if (!hasBytes(packet) || (!m_audio->isOpen(packet.codecId()) && !openAudio(packet)))
        return;
    double timeSec = packet.time();
    int result = m_audio->send(*packet.packet());
    while (result >= 0 && (result = m_audio->receive()) >= 0) {
        passSound(timeSec);
        timeSec += durationSec(*m_audio->frame());
    }
    // The loop ends with EAGAIN when all was well.
    result = result == AVERROR(EAGAIN) ? 0 : result;
    m_audioErrors.note(result);
    if (result < 0)
        stats().decodeErrors.fetch_add(1, std::memory_order_relaxed);
}

bool KvPlayerDecoder::openAudio(const KvBasePlayerInputPacket& packet) {
    if (packet.codecId() != m_knownSoundId)
        forgetSound();
    if (packet.codecId() != AV_CODEC_ID_ADPCM_G726)
        return m_audio->open(packet.codecId(), false);
    // Its code size shows only when the second packet tells how long the first one lasts.
    const size_t bytes = std::exchange(m_lastG726Bytes, static_cast<size_t>(packet.packet()->size));
    const double seconds = packet.time() - std::exchange(m_lastG726Sec, packet.time());
    return bytes > 0 &&
           m_audio->open(packet.codecId(), false, orvelle::g726BitsPerSample(bytes, seconds));
}

void KvPlayerDecoder::passSound(double timeSec) {
    const AVFrame& frame = *m_audio->frame();
    if (frame.nb_samples <= 0 || frame.sample_rate <= 0)
        return;
    const AVCodecContext& codec = *m_audio->context();
    // They hardly ever change, and copying them takes allocations.
    if (m_knownSoundId != codec.codec_id || m_knownSoundRate != codec.sample_rate ||
        m_knownSoundChannels != codec.ch_layout.nb_channels)
        m_audioParameters.publish(codec);
    m_knownSoundId = codec.codec_id;
    m_knownSoundRate = codec.sample_rate;
    m_knownSoundChannels = codec.ch_layout.nb_channels;
    m_soundFrameSec = durationSec(frame);
    if (timeSec < -kRoundingSec)
        return;
    m_audioFrames->put(std::make_unique<KvBasePlayerDecoderFrame>(&frame, timeSec));
    if (input()->isLive())
        boundSound(m_soundFrameSec);
}

void KvPlayerDecoder::boundSound(double frameSec) {
    // Two frames may always wait, however long they are.
    const int most = std::max(2, static_cast<int>(kMaxSoundSec / frameSec));
    const int left = std::max(1, static_cast<int>(kSoundLeftSec / frameSec));
    if (m_audioFrames->size() <= most)
        return;
    while (m_audioFrames->size() > left && m_audioFrames->take())
        stats().audioFramesDropped.fetch_add(1, std::memory_order_relaxed);
}
