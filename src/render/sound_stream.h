#pragma once

#include <QAudio>
#include <QAudioFormat>
#include <QElapsedTimer>
#include <QEvent>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

#include "render/sound_format.h"

class QAudioOutput;
class QIODevice;

namespace orvelle {

/// One player's way to the default sound device. The object lives on the SoundThread; its public
/// operations hand their request over to it.
///
///     closed --open()--> armed --first audible write--> playing --mute--> armed
///     armed or playing --device lost--> lost --a later write--> playing
///     any --close()--> closed
class SoundStream : public QObject {
    Q_OBJECT
public:
    SoundStream();
    ~SoundStream() override;

    /// Asks for the default device, with its preferred format unless given, and waits a moment for
    /// the outcome: false when there is none or it refuses. Any thread but the interface.
    bool open(const std::optional<QAudioFormat>& format);
    /// Never blocks. Any thread.
    void close();
    /// Blocks until the device took all bytes, interrupt(), muting or the device's loss: false when
    /// there is no device. One thread at a time.
    bool write(const void* data, int length);
    /// Asks for a lost device again, now and then. Any thread.
    void reopenIfDue();

    /// 0.0 gives the device back until it is audible again. Any thread.
    void setVolume(float volume);
    float volume() const { return m_volume; }
    bool isMuted() const { return m_volume == 0.0f; }

    void interrupt();
    bool isInterrupted() const { return m_isInterrupted; }
    /// Whether opening failed, the device was lost or close() was called.
    bool isClosed() const { return m_isClosed; }
    /// Whether writes have a device to go to.
    bool isOpen() const { return m_isWanted && !m_isClosed; }
    SoundFormat format() const;

    /// Deletes the object on its own thread; the caller lets go of it. Any thread.
    void retire();

protected:
    bool event(QEvent* event) override;

private:
    void wake();
    void post(QEvent::Type type);
    void serve();
    bool arm();
    bool startOutput();
    void stopOutput();
    qreal outputVolume() const;
    void dropPending();
    void pump();
    bool hasPending() const;
    int takeChunk(int maxBytes, const char** data);
    void finishChunk(qint64 accepted);
    void onStateChanged(QAudio::State state);
    void loseDevice();
    void publish(bool isOpen, int serial);

    // Sound thread.
    std::unique_ptr<QAudioOutput> m_output;
    QIODevice* m_device = nullptr;  ///< of m_output
    QAudioFormat m_audioFormat;
    QTimer m_spaceTimer;  ///< runs while a write waits for room in the device

    // Atomics; each stands for itself.
    std::atomic<float> m_volume{1.0f};
    std::atomic<bool> m_isWanted{false};  ///< written under m_mutex, as the two below
    std::atomic<bool> m_isClosed{false};
    std::atomic<bool> m_isInterrupted{false};
    std::atomic<bool> m_isWakePending{false};

    mutable std::mutex m_mutex;  ///< guards everything below; pairs it with m_changed
    std::condition_variable m_changed;
    std::optional<QAudioFormat> m_wantedFormat;
    int m_requestSerial = 0;  ///< counts what was asked: open, close, reopen
    int m_servedSerial = 0;   ///< the last request that was carried out
    QElapsedTimer m_sinceOpened;
    SoundFormat m_format;
    const char* m_pending = nullptr;  ///< the blocked writer's remaining bytes
    int m_pendingBytes = 0;
    bool m_isCopying = false;  ///< the sound thread reads them just now
};

}  // namespace orvelle
