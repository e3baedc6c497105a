#include "media/recording/player_recorder.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QtDebug>

#include <algorithm>
#include <cmath>

#include "media/media_log.h"
#include "media/recording/recording_sink.h"
#include "media/recording/recording_writer.h"
#include "platform/suspend_delay.h"

using orvelle::RecordingFault;
using orvelle::RecordingResult;
using orvelle::RecordingWriter;

namespace {

/// About a minute of a camera's packets: a disk that stands still longer has failed.
constexpr int kMaxPackets = 4096;
constexpr int64_t kMaxBytes = int64_t{64} << 20;
constexpr int kWaitMs = 1000;
/// How long what waits may take to be written once the recording was asked to end.
constexpr qint64 kMaxDrainMs = 10'000;

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
    : m_source(input, decoder) {}

KvPlayerRecorder::~KvPlayerRecorder() {
    stop();
}

void KvPlayerRecorder::setCallback(void* user, EventCallback callback) {
    std::lock_guard<std::mutex> lock(m_callbackMutex);
    m_user = user;
    m_callback = callback;
}

void KvPlayerRecorder::configure(const QString& path, const QString& formatName,
                                 double /*limitSeconds*/) {
    std::lock_guard<std::mutex> lock(m_resultMutex);
    m_path = path;
    m_formatName = formatName;
}

QString KvPlayerRecorder::path() const {
    std::lock_guard<std::mutex> lock(m_resultMutex);
    return m_path;
}

RecordingResult KvPlayerRecorder::result() const {
    std::lock_guard<std::mutex> lock(m_resultMutex);
    return m_result;
}

int KvPlayerRecorder::start() {
    if (m_thread || !m_source.prepare())
        return -1;
    m_packets = std::make_unique<PacketQueue>();
    m_suspendDelay = std::make_unique<orvelle::SuspendDelay>();
    m_thread = std::make_unique<KvPlayerRecoderThread>(this);
    m_thread->start(QThread::InheritPriority);
    return 0;
}

void KvPlayerRecorder::requestStop() {
    m_isTapOpen = false;
    if (!m_thread)
        return;
    m_thread->stop();
    m_packets->interrupt();
}

void KvPlayerRecorder::requestDiscard() {
    m_isDiscarded = true;
    requestStop();
}

void KvPlayerRecorder::release() {
    requestStop();
    m_source.release();
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
    const bool isKnown = packet.isVideo() || packet.mediaType() == KvBasePlayerInputPacket::kAudio;
    if (!isKnown || !hasBytes(packet) || !(m_isTapOpen || m_isAttaching))
        return;
    const bool hasRoom = m_packets->size() < kMaxPackets && m_queuedBytes < kMaxBytes;
    auto copy = hasRoom ? packet.deepCopy() : nullptr;
    if (!copy) {
        m_isOverrun = true;
        m_isTapOpen = false;
        return;
    }
    m_queuedBytes += copy->packet()->size;
    m_packets->put(std::move(copy));
}

void KvPlayerRecorder::record(KvThread& thread) {
    qDebug("KvPlayerRecorder doRecord");
    RecordingWriter writer(m_source, path(), m_formatName,
                           {[this](const QString& path) { noteFile(path); },
                            [this](double seconds) { notify(kProgress, seconds, -1.0); }});
    // Also for a recording that was ended at once: what it was begun for is in that group.
    m_isAttaching = true;
    const double keptSec = m_source.attach(this, &KvPlayerRecorder::onPacket);
    m_isAttaching = false;
    writer.setBegunAt(QDateTime::currentDateTimeUtc().addMSecs(-std::llround(1000 * keptSec)));
    const int error = copyPackets(thread, writer);
    qDebug("input set callback null");
    m_source.detach();
    qDebug("uninit record");
    finish(writer, error);
    m_suspendDelay.reset();
    // Whoever hears of the end, on whatever thread, finds that nothing is being recorded.
    thread.stop();
    m_hasEnded = true;
    qDebug("docallback");
    const bool hasFailed = result().fault != RecordingFault::kNone;
    if (hasFailed)
        notify(kFailed);
    if (writer.hasBegun() || !hasFailed)
        notify(kEnded);
    qDebug("record thread ended");
}

/// Until the recording is to end and nothing waits any more; 0 or the error that ended it.
int KvPlayerRecorder::copyPackets(KvThread& thread, RecordingWriter& writer) {
    QElapsedTimer draining;
    for (;;) {
        if (thread.isStopped() && !draining.isValid())
            draining.start();
        std::unique_ptr<KvBasePlayerInputPacket> packet = m_packets->take();
        if (!packet && m_isOverrun) {
            qCWarning(lcMedia, "the disk does not keep up with the recording");
            return AVERROR(ETIMEDOUT);
        }
        if (!packet && draining.isValid())
            return 0;
        if (!packet) {
            m_packets->waitForItem(kWaitMs);
            continue;
        }
        if (draining.isValid() && draining.elapsed() > kMaxDrainMs) {
            qCWarning(lcMedia, "the disk did not take the end of the recording");
            return AVERROR(ETIMEDOUT);
        }
        m_queuedBytes -= packet->packet()->size;
        const int result = writer.write(std::move(packet));
        if (result < 0) {
            qDebug("write packet failed = %d break", result);
            return result;
        }
    }
}

void KvPlayerRecorder::noteFile(const QString& path) {
    {
        std::lock_guard<std::mutex> lock(m_resultMutex);
        m_path = path;
    }
    m_hasFile = true;
    notify(kCreated);
}

void KvPlayerRecorder::finish(RecordingWriter& writer, int error) {
    const int closing = writer.close();
    QStringList files = writer.files();
    if (m_isDiscarded) {
        for (const QString& file : qAsConst(files)) {
            if (!QFile::remove(file))
                qCWarning(lcMedia).noquote() << file << "could not be removed";
        }
        files.clear();
    }
    std::lock_guard<std::mutex> lock(m_resultMutex);
    m_result = {files, orvelle::recordingFaultOf(error < 0 ? error : closing), writer.lacksSound()};
}

void KvPlayerRecorder::notify(Event event, double a, double b) {
    std::lock_guard<std::mutex> lock(m_callbackMutex);
    if (m_callback)
        m_callback(m_user, event, a, b);
}
