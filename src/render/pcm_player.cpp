#include "render/pcm_player.h"

#include <QtDebug>

#include <algorithm>

#include "render/audio_converter.h"
#include "render/sound_stream.h"
#include "render/sound_thread.h"

namespace {

constexpr int kChunkBytes = 1024;
constexpr int64_t kMaxSilenceUs = 10'000'000;

}  // namespace

KvPcmPlayer::KvPcmPlayer(QObject* parent)
    : QObject(parent), m_stream(std::make_unique<orvelle::SoundStream>()) {
    m_stream->moveToThread(&orvelle::SoundThread::instance());
}

KvPcmPlayer::~KvPcmPlayer() {
    if (!m_usesThread)
        return;
    stop();
    m_stream.release()->retire();
    orvelle::SoundThread::instance().release();
}

int KvPcmPlayer::start() {
    const int result = open(std::nullopt);
    qDebug("KvPcmPlayer start %d", isClosed() ? 1 : 0);
    return result;
}

int KvPcmPlayer::openFormat(const QAudioFormat& format) {
    return open(format);
}

void KvPcmPlayer::stop() {
    m_stream->close();
}

int KvPcmPlayer::write(const void* data, int length) {
    if (!m_stream->isOpen()) {
        m_stream->reopenIfDue();
        return -1;
    }
    if (m_stream->isMuted())
        return length;
    return m_stream->write(data, length) ? 0 : -1;
}

int KvPcmPlayer::writeFrame(const AVFrame* frame) {
    if (!m_stream->isOpen()) {
        m_stream->reopenIfDue();
        return -1;
    }
    const orvelle::SoundFormat format = m_stream->format();
    if (!format.isValid() || !frame || frame->nb_samples < 0)
        return -1;
    if (m_stream->isMuted()) {
        m_converter.reset();
        return 0;
    }
    if (frame->format == format.sampleFormat && frame->sample_rate == format.sampleRate &&
        frame->ch_layout.nb_channels == format.channels) {
        write(frame->data[0], frame->nb_samples * format.frameBytes());
        return 0;
    }
    return writeConverted(frame, format);
}

int KvPcmPlayer::writeSilence(int64_t microseconds) {
    const orvelle::SoundFormat format = m_stream->format();
    if (!m_stream->isOpen() || !format.isValid() || microseconds < 0)
        return -1;
    const int64_t frames = std::min(microseconds, kMaxSilenceUs) * format.sampleRate / 1'000'000;
    const std::vector<char> zeros(static_cast<size_t>(frames) *
                                  static_cast<size_t>(format.frameBytes()));
    return write(zeros.data(), static_cast<int>(zeros.size()));
}

void KvPcmPlayer::setVolume(float volume) {
    m_stream->setVolume(volume);
}

float KvPcmPlayer::volume() const {
    return m_stream->volume();
}

void KvPcmPlayer::interrupt() {
    m_stream->interrupt();
}

bool KvPcmPlayer::isInterrupted() const {
    return m_stream->isInterrupted();
}

bool KvPcmPlayer::isClosed() const {
    return m_stream->isClosed();
}

int KvPcmPlayer::open(const std::optional<QAudioFormat>& format) {
    if (!m_usesThread) {
        orvelle::SoundThread::instance().acquire();
        m_usesThread = true;
    }
    return m_stream->open(format) ? 0 : -1;
}

int KvPcmPlayer::writeConverted(const AVFrame* frame, const orvelle::SoundFormat& format) {
    // A device that came back may want another format.
    if (!m_converter || !(format == m_converterFormat)) {
        m_converter = std::make_unique<KvAudioConverter>(format.sampleRate, format.channelLayout(),
                                                         format.channels, format.sampleFormat);
        m_converterFormat = format;
    }
    m_converter->convert(frame);
    m_chunks.clear();
    char chunk[kChunkBytes];
    while (!isInterrupted() && m_converter->read(chunk, kChunkBytes) == kChunkBytes)
        m_chunks.insert(m_chunks.end(), chunk, chunk + kChunkBytes);
    write(m_chunks.data(), static_cast<int>(m_chunks.size()));
    return 0;
}
