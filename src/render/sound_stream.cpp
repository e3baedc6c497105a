#include "render/sound_stream.h"

#include <QAudioDeviceInfo>
#include <QAudioOutput>
#include <QCoreApplication>
#include <QEvent>
#include <QLoggingCategory>

#include <algorithm>
#include <chrono>

#include "core/tsan_annotations.h"
#include "render/sound_thread.h"

namespace orvelle {

namespace {

Q_LOGGING_CATEGORY(lcRender, "orvelle.render")

constexpr auto kRequest = QEvent::User;
constexpr auto kRetirement = static_cast<QEvent::Type>(QEvent::User + 1);

using std::chrono::milliseconds;

// Sound that waits in the device is delay; below this, a busy machine makes it stutter.
constexpr int kDeviceBufferMs = 120;
// Whoever opens goes on without an answer of the sound server then.
constexpr milliseconds kOpenTimeout(400);
constexpr qint64 kReopenIntervalMs = 1000;
constexpr int kMinSpacePollMs = 5;
constexpr int kMaxSpacePollMs = 20;

}  // namespace

SoundStream::SoundStream() {
    m_spaceTimer.setParent(this);
    m_spaceTimer.setTimerType(Qt::PreciseTimer);
    m_spaceTimer.setSingleShot(true);
    connect(&m_spaceTimer, &QTimer::timeout, this, &SoundStream::pump);
}

SoundStream::~SoundStream() {
    stopOutput();
}

bool SoundStream::open(const std::optional<QAudioFormat>& format) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_isInterrupted = false;
    m_isClosed = false;
    m_isWanted = true;
    m_wantedFormat = format;
    const int serial = ++m_requestSerial;
    m_sinceOpened.start();
    lock.unlock();
    wake();
    lock.lock();
    std::atomic<bool>& isResponsive = SoundThread::instance().isResponsive;
    const bool isAnswered =
        m_changed.wait_for(lock, isResponsive ? kOpenTimeout : milliseconds(0),
                           [&] { return m_servedSerial >= serial || m_isInterrupted; });
    isResponsive = isResponsive && isAnswered;
    return isOpen();
}

void SoundStream::close() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_isClosed = true;
        m_isWanted = false;
        ++m_requestSerial;
    }
    m_changed.notify_all();
    wake();
}

bool SoundStream::write(const void* data, int length) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!isOpen() || m_isInterrupted || length <= 0)
        return isOpen();
    m_pending = static_cast<const char*>(data);
    m_pendingBytes = length;
    lock.unlock();
    wake();
    lock.lock();
    m_changed.wait(lock, [this] {
        return !m_isCopying && (m_pendingBytes == 0 || m_isInterrupted || !isOpen());
    });
    m_pendingBytes = 0;
    return isOpen();
}

void SoundStream::reopenIfDue() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_isWanted || !m_isClosed || m_sinceOpened.elapsed() < kReopenIntervalMs)
            return;
        m_sinceOpened.start();
        ++m_requestSerial;
    }
    wake();
}

void SoundStream::setVolume(float volume) {
    if (m_volume.exchange(volume) != volume)
        wake();
}

void SoundStream::interrupt() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_isInterrupted = true;
    }
    m_changed.notify_all();
}

SoundFormat SoundStream::format() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_format;
}

void SoundStream::wake() {
    tsanAcquire(&SoundThread::instance());
    if (m_isWakePending.exchange(true))
        return;
    post(kRequest);
}

void SoundStream::retire() {
    post(kRetirement);
}

void SoundStream::post(QEvent::Type type) {
    auto* const event = new QEvent(type);
    tsanRelease(this);
    const TsanBlindSpot queue;
    QCoreApplication::postEvent(this, event);
}

bool SoundStream::event(QEvent* event) {
    tsanAcquire(this);
    if (event->type() == kRetirement) {
        deleteLater();
        // The thread may end first; then the next one deletes it.
        tsanRelease(this);
    }
    if (event->type() != kRequest)
        return QObject::event(event);
    m_isWakePending = false;
    serve();
    return true;
}

void SoundStream::serve() {
    int serial;
    bool isNew;
    bool isWanted;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        serial = m_requestSerial;
        isNew = serial != m_servedSerial;
        isWanted = m_isWanted;
    }
    if (isNew || isMuted())
        stopOutput();
    if (isNew)
        publish(isWanted && arm() && (isMuted() || startOutput()), serial);
    if (m_output)
        m_output->setVolume(outputVolume());
    if (isMuted())
        dropPending();
    pump();
}

qreal SoundStream::outputVolume() const {
    return std::clamp(m_volume.load(), 0.0f, 1.0f);
}

// A writer that is blocked when the sound is muted must not have the device opened again.
void SoundStream::dropPending() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_pendingBytes = 0;
    }
    m_changed.notify_all();
}

bool SoundStream::arm() {
    const QAudioDeviceInfo device = QAudioDeviceInfo::defaultOutputDevice();
    if (device.isNull())
        return false;
    std::optional<QAudioFormat> wanted;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        wanted = m_wantedFormat;
    }
    m_audioFormat = negotiateFormat(device, wanted.value_or(device.preferredFormat()));
    const SoundFormat format = soundFormatOf(m_audioFormat);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_format = format;
    return format.isValid() && format.channels <= 2;
}

bool SoundStream::startOutput() {
    m_output = std::make_unique<QAudioOutput>(m_audioFormat);
    m_output->setBufferSize(m_audioFormat.bytesForDuration(kDeviceBufferMs * 1000));
    m_output->setVolume(outputVolume());
    m_device = m_output->start();
    connect(m_output.get(), &QAudioOutput::stateChanged, this, &SoundStream::onStateChanged);
    if (!m_device || m_output->error() == QAudio::FatalError ||
        m_output->error() == QAudio::OpenError)
        stopOutput();
    return m_device != nullptr;
}

void SoundStream::stopOutput() {
    m_spaceTimer.stop();
    m_device = nullptr;
    if (!m_output)
        return;
    m_output->disconnect(this);
    m_output->stop();
    // Later: the toolkit's device runs the event loop while it is destroyed, which may end this
    // object under the feet of the caller.
    m_output.release()->deleteLater();
}

void SoundStream::pump() {
    while (hasPending()) {
        if (!m_output && !startOutput()) {
            loseDevice();
            return;
        }
        const int period = m_output->periodSize();
        const char* data = nullptr;
        const int bytes = period > 0 && m_output->bytesFree() > 0 ? takeChunk(period, &data) : 0;
        const qint64 accepted = bytes > 0 ? m_device->write(data, bytes) : 0;
        if (bytes > 0)
            finishChunk(accepted);
        if (!m_device)
            return;
        if (accepted < 0) {
            loseDevice();
            return;
        }
        if (accepted == 0) {
            const auto periodMs = static_cast<int>(m_audioFormat.durationForBytes(period) / 1000);
            m_spaceTimer.start(std::clamp(periodMs, kMinSpacePollMs, kMaxSpacePollMs));
            return;
        }
    }
}

bool SoundStream::hasPending() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_pendingBytes > 0 && !m_isInterrupted && isOpen();
}

int SoundStream::takeChunk(int maxBytes, const char** data) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_isCopying = m_pendingBytes > 0;
    *data = m_pending;
    return std::min(maxBytes, m_pendingBytes);
}

void SoundStream::finishChunk(qint64 accepted) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_isCopying = false;
        const int taken = static_cast<int>(std::clamp<qint64>(accepted, 0, m_pendingBytes));
        m_pending += taken;
        m_pendingBytes -= taken;
    }
    m_changed.notify_all();
}

void SoundStream::onStateChanged(QAudio::State state) {
    if (state != QAudio::StoppedState || !m_output || m_output->error() == QAudio::NoError)
        return;
    qCWarning(lcRender, "the sound device was lost (error %d)", m_output->error());
    // Writes and stop() would crash from here on.
    m_device = nullptr;
    m_output->disconnect(this);
    m_output.release()->deleteLater();
    loseDevice();
}

void SoundStream::loseDevice() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_isClosed = true;
    }
    m_changed.notify_all();
}

void SoundStream::publish(bool isOpen, int serial) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_servedSerial = serial;
        SoundThread::instance().isResponsive = true;
        if (serial == m_requestSerial)
            m_isClosed = !isOpen;
    }
    m_changed.notify_all();
}

}  // namespace orvelle
