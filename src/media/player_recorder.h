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
#include "media/stream_parameters.h"

class KvBasePlayerDecoder;
class KvBasePlayerInput;
class KvPlayerRecorder;

namespace orvelle {
class RecordingFile;
}

class KvPlayerRecoderThread : public KvThread {
public:
    explicit KvPlayerRecoderThread(KvPlayerRecorder* recorder);
    void run() override;

private:
    KvPlayerRecorder* const m_recorder;  ///< borrowed; outlives the thread
};

/// Copies what a player's input delivers into a file on a thread of its own, without encoding but
/// for sound that the file's format cannot hold.
///
/// It begins at the next key frame and serves for one recording. Owned by the player, whose
/// stages (borrowed) outlive it; start() and stop() belong to the player's owner.
class KvPlayerRecorder : public QObject {
    Q_OBJECT
public:
    /// What the callback is told, on the recorder's thread. A recording that could not begin ends
    /// with kFailed alone; any other ends with kEnded, after kFailed when something was lost.
    enum Event : int32_t {
        kCreated = 0,
        kEnded = 1,
        kFailed = 2,
        kProgress = 3,  ///< a = seconds recorded, b = -1
    };
    /// The result is ignored.
    using EventCallback = int32_t (*)(void* user, int32_t event, double a, double b);

    KvPlayerRecorder(KvBasePlayerInput* input, KvBasePlayerDecoder* decoder);
    ~KvPlayerRecorder() override;

    /// Both before start(). `formatName` is FFmpeg's ("mp4"). The limit ends nothing by itself.
    void setCallback(void* user, EventCallback callback);
    void configure(const QString& path, const QString& formatName, double limitSeconds);

    int start();
    /// Ends the recording and waits until its file is closed.
    void stop();
    /// Asks the thread to end without waiting; stop() still has to follow.
    void requestStop();
    /// True from start() until the thread has ended or was asked to.
    bool isRecording() const;

    /// As configured; from kCreated on the file really written, whose name may have got a number.
    /// Any thread.
    QString path() const;
    /// Whether the file was created, so that path() is its own. Any thread.
    bool hasFile() const { return m_hasFile; }

private:
    friend class KvPlayerRecoderThread;
    using PacketQueue = OwningQueue<KvBasePlayerInputPacket>;
    enum class Outcome { kStopped, kSpoiled, kNotBegun };

    static void onPacket(void* user, KvBasePlayerInputPacket* packet);
    void tap(const KvBasePlayerInputPacket& packet);

    void record(KvThread& thread);
    Outcome copyPackets(KvThread& thread, orvelle::RecordingFile& file);
    int begin(KvThread& thread, orvelle::RecordingFile& file,
              const KvBasePlayerInputPacket& keyPacket);
    /// What the decoder knows of the stream that begins with `sets`; empty when it does not.
    orvelle::StreamParameters awaitVideo(KvThread& thread, int codecId,
                                         const std::vector<uint8_t>& sets);
    /// Keeps a packet of AAC for the file's header, from the queue when none was seen before.
    void awaitSoundSample(KvThread& thread, const orvelle::StreamParameters& sound);
    std::unique_ptr<KvBasePlayerInputPacket> copyQueuedSound() const;
    int write(orvelle::RecordingFile& file, KvBasePlayerInputPacket& packet);
    void notify(Event event, double a = 0.0, double b = 0.0);

    KvBasePlayerInput* const m_input;
    KvBasePlayerDecoder* const m_decoder;
    QString m_formatName;  ///< fixed while the thread runs, as the four below
    void* m_user = nullptr;
    EventCallback m_callback = nullptr;
    std::unique_ptr<PacketQueue> m_packets;
    std::unique_ptr<KvPlayerRecoderThread> m_thread;
    std::unique_ptr<KvBasePlayerInputPacket> m_soundSample;  ///< used by the thread alone

    /// The queue was full, so a packet is missing; set by the tap, read by the recorder's thread.
    std::atomic<bool> m_isOverrun{false};
    std::atomic<int64_t> m_queuedBytes{0};  ///< bounds what a stalled disk costs; orders nothing

    std::atomic<bool> m_hasFile{false};
    mutable std::mutex m_pathMutex;  ///< guards the one below
    QString m_path;
};
