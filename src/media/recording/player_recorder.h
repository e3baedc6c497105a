#pragma once

#include <QObject>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "core/thread.h"
#include "frames/input_packet.h"
#include "frames/mutex_queue.h"
#include "media/recording/recording_source.h"
#include "media/stages/recording_result.h"

class KvBasePlayerDecoder;
class KvBasePlayerInput;
class KvPlayerRecorder;

namespace orvelle {
class RecordingWriter;
class SuspendDelay;
}  // namespace orvelle

class KvPlayerRecoderThread : public KvThread {
public:
    explicit KvPlayerRecoderThread(KvPlayerRecorder* recorder);
    void run() override;

private:
    KvPlayerRecorder* const m_recorder;  ///< borrowed; outlives the thread
};

/// Copies what a player's input delivers into files on a thread of its own, without encoding but
/// for sound that the file's format cannot hold.
///
/// It begins with the group of pictures that runs at start(), or at the next key frame, and serves
/// for one recording. What was delivered until it is asked to stop is written. start(), stop()
/// and what is said of neither thread belong to the owner's thread, the interface's.
class KvPlayerRecorder : public QObject {
    Q_OBJECT
public:
    /// What the callback is told, on the recorder's thread. A recording that could not begin ends
    /// with kFailed alone; any other ends with kEnded, after kFailed when something was lost.
    enum Event : int32_t {
        kCreated = 0,  ///< for each file
        kEnded = 1,
        kFailed = 2,
        kProgress = 3,  ///< a = seconds recorded, b = -1
    };
    /// The result is ignored. Must not wait, nor call the recorder.
    using EventCallback = int32_t (*)(void* user, int32_t event, double a, double b);

    /// The stages are borrowed until release() or the end.
    KvPlayerRecorder(KvBasePlayerInput* input, KvBasePlayerDecoder* decoder);
    ~KvPlayerRecorder() override;

    /// Any time; once it returns the former callback is not running.
    void setCallback(void* user, EventCallback callback);
    /// Before start(). `formatName` is FFmpeg's ("mp4"). The limit ends nothing by itself.
    void configure(const QString& path, const QString& formatName, double limitSeconds);

    int start();
    /// Ends the recording and waits until its file is closed, which takes as long as the disk does.
    void stop();
    /// Asks the recording to end without waiting; its last event tells when its file is closed.
    void requestStop();
    /// The same, and its files are deleted then.
    void requestDiscard();
    /// The same as requestStop(), and the stages are not used any more once it returns.
    void release();
    /// True from start() until the thread has ended or was asked to. Any thread.
    bool isRecording() const;
    /// Whether the last event was raised: stop() does not wait any more. Any thread.
    bool hasEnded() const { return m_hasEnded; }

    /// As configured; from kCreated on the file really written, whose name may have got a number.
    /// Any thread.
    QString path() const;
    /// Whether the file was created, so that path() is its own. Any thread.
    bool hasFile() const { return m_hasFile; }
    /// Once it has ended. Any thread.
    orvelle::RecordingResult result() const;

private:
    friend class KvPlayerRecoderThread;
    using PacketQueue = OwningQueue<KvBasePlayerInputPacket>;

    static void onPacket(void* user, KvBasePlayerInputPacket* packet);
    void tap(const KvBasePlayerInputPacket& packet);

    void record(KvThread& thread);
    int copyPackets(KvThread& thread, orvelle::RecordingWriter& writer);
    void noteFile(const QString& path);
    void finish(orvelle::RecordingWriter& writer, int error);
    void notify(Event event, double a = 0.0, double b = 0.0);

    orvelle::RecordingSource m_source;
    QString m_formatName;  ///< fixed while the thread runs, as the two below
    std::unique_ptr<PacketQueue> m_packets;
    std::unique_ptr<KvPlayerRecoderThread> m_thread;
    std::unique_ptr<orvelle::SuspendDelay> m_suspendDelay;  ///< until the files are closed

    std::mutex m_callbackMutex;  ///< guards the two below; held while the callback runs
    void* m_user = nullptr;
    EventCallback m_callback = nullptr;

    std::atomic<bool> m_isTapOpen{true};  ///< orders nothing, as the five below
    std::atomic<bool> m_isAttaching{false};
    std::atomic<bool> m_isOverrun{false};  ///< the queue was full, so what follows is missing
    std::atomic<bool> m_isDiscarded{false};
    std::atomic<int64_t> m_queuedBytes{0};  ///< bounds what a stalled disk costs
    std::atomic<bool> m_hasFile{false};

    std::atomic<bool> m_hasEnded{false};  ///< publishes m_result's last value
    mutable std::mutex m_resultMutex;     ///< guards the two below
    QString m_path;
    orvelle::RecordingResult m_result;
};
