#pragma once

#include <QDateTime>

#include <atomic>
#include <cstdint>
#include <memory>

#include "media/card/playback_exchange.h"
#include "media/card/playback_times.h"
#include "media/stages/channel_input.h"
#include "media/stages/playback_end.h"

class KvTUTKDevice;
class KvTUTKPlaybackInputThread;
class KvTUTKResponse;

namespace orvelle {
struct SMsgAVIoctrlPlayRecord;
}

/// A recording on a camera's memory card, from a given moment on.
///
/// open() returns at once. The open thread asks the camera to play, logs in on the AV channel that
/// the camera names, runs the receive threads, and takes the playback down again when the camera
/// came to the end, was lost or close() was called; isRunning() tells until then.
///
/// Pictures and sound have the times of PlaybackTimes, counted from the moment asked for. Nothing
/// is thrown away: the camera is told how much there is room for, and one that does not listen is
/// left unread when a minute of its recording waits. Once the reader has run dry and said so with
/// holdBack(), it gets nothing until a second and a half of the recording waits.
///
/// A playback that cannot start raises kUnusable, a lost camera kLost, and neither twice, nor after
/// requestStop(); a camera that does not answer is waited for until close().
class KvTUTKPlaybackInput : public orvelle::ChannelInput {
    Q_OBJECT
public:
    /// More than a minute at 30 pictures a second holds, or at 8 Mbit/s.
    static constexpr int kMaxPictures = 1800;
    static constexpr int64_t kMaxBytes = 64 * 1024 * 1024;
    /// What a camera is told that there is room for, of pictures and sound together.
    static constexpr uint32_t kRoomFrames = 1536;
    static constexpr uint64_t kRoomBytes = 8 * 1024 * 1024;

    explicit KvTUTKPlaybackInput(QObject* parent = nullptr);
    ~KvTUTKPlaybackInput() override;  ///< closes

    int open() override;
    /// Waits for no answer of the camera.
    void close() override;
    bool isLive() override { return false; }
    int speed() override { return 0; }
    bool isRunning() override;
    int readVideoPacket(Packet** packet) override;
    int readAudioPacket(Packet** packet) override;
    bool waitForVideoPacket(const KvThread& reader, int timeoutMs) override;
    void flush() override;
    void holdBack() override;
    void requestStop() override;

    /// Before open(); borrowed, outlives the input.
    void setDevice(KvTUTKDevice* device);
    enum class Purpose { kWatch, kDownload };
    /// What the camera is asked for: each has a playback of its own there. Before open().
    void setPurpose(Purpose purpose) { m_purpose = purpose; }
    /// The instant to play from; takes effect with the next open().
    void setStartTime(const QDateTime& time) { m_startTime = time; }
    /// When the recording that holds that instant starts, which the camera's stamps count from;
    /// without it the first picture counts as the moment asked for. With the next open().
    void setRecordingStart(const QDateTime& time) { m_recordingStart = time; }
    /// The moment of the picture with that time, in seconds from the start time. Any thread between
    /// open() and close().
    double positionOf(double timeSec) const {
        return m_times ? m_times->positionOf(timeSec) : timeSec;
    }

    /// Before open(): a playback of the same device that was asked to stop. It is deleted on the
    /// open thread, once it has ended, so that its last word to the camera comes before this one's
    /// first.
    void setFormer(std::unique_ptr<KvBasePlayerInput> former) { m_former = std::move(former); }
    /// Before open(), once per device: spares asking the camera for its clock again.
    void setBaseMinute(const std::optional<int32_t>& minutes) { m_knownBaseMinute = minutes; }
    /// What the camera told, or nothing yet. Any thread.
    std::optional<int32_t> baseMinute() const { return m_exchange.baseMinute(); }

    /// Any thread; kNone until the input has ended by itself.
    orvelle::PlaybackEnd endReason() const { return m_endReason; }

    /// The threads' loops.
    void doOpen();
    void doRecvVideo(KvThread& thread);
    void doRecvAudio(KvThread& thread);
    /// Told by the open thread, which counts as stopped.
    void openEnded();

protected:
    bool isOver(const KvThread& thread) const override;
    bool isEnding() const override { return m_exchange.hasEnded(); }
    bool isEnd(int result) const override;
    void channelEnded(MediaKind kind) override;
    void boundVideo(const KvThread& thread) override;
    void boundAudio(const KvThread&) override {}
    void storeVideo(std::unique_ptr<Packet> packet) override;
    void storeAudio(std::unique_ptr<Packet> packet) override;

private:
    static void onResponse(void* input, KvTUTKResponse* response);
    void handleResponse(const KvTUTKResponse& response);

    bool isDeviceThere() const;
    bool awaitAnswer();
    bool askTimeBase();
    void askStart();
    void sendControl(const orvelle::SMsgAVIoctrlPlayRecord& request);
    bool startClient();
    int openClient(int channel);
    void interruptLogin();
    void receive();
    void grantRoom();
    void noteTaken(const Packet& packet);
    bool isHeldBack();
    void askStop();
    void tearDown();
    orvelle::PlaybackEnd refusal() const;
    void fail(orvelle::PlaybackEnd reason, Event event);

    Purpose m_purpose = Purpose::kWatch;
    KvTUTKDevice* m_device = nullptr;  ///< fixed between open() and close(), as the three below
    QDateTime m_openTime;              ///< m_startTime at open()
    std::unique_ptr<orvelle::PlaybackTimes> m_times;
    std::unique_ptr<KvTUTKPlaybackInputThread> m_openThread;
    std::unique_ptr<KvBasePlayerInput> m_former;  ///< owner until open(), then open thread

    QDateTime m_startTime;  ///< owner, as the one below
    QDateTime m_recordingStart;
    std::optional<int32_t> m_knownBaseMinute;

    std::unique_ptr<KvTUTKPlaybackInputThread> m_videoThread;  ///< open thread, as below
    std::unique_ptr<KvTUTKPlaybackInputThread> m_audioThread;

    std::mutex m_eventMutex;  ///< held while an event is raised, and to stop

    std::mutex m_roomMutex;     ///< guards the four below; not held while anything is sent
    uint64_t m_takenBytes = 0;  ///< since the client was started, as the rest
    uint32_t m_takenFrames = 0;
    uint64_t m_grantedBytes = 0;
    uint32_t m_grantedFrames = 0;

    std::atomic<double> m_lastQueuedSec{0.0};  ///< time of the last picture; orders nothing
    std::atomic<double> m_lastReadSec{0.0};    ///< the same
    std::atomic<bool> m_isHeldBack{false};     ///< the same
    orvelle::PlaybackExchange m_exchange;
    std::atomic<int> m_sid{-1};           ///< the session at open(); orders nothing, as the rest
    std::atomic<int> m_loginChannel{-1};  ///< -1 unless a login is under way
    std::atomic<orvelle::PlaybackEnd> m_endReason{orvelle::PlaybackEnd::kNone};
};
