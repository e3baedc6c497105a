#pragma once

#include <QDateTime>

#include <atomic>
#include <cstdint>
#include <memory>

#include "media/card/playback_exchange.h"
#include "media/stages/channel_input.h"
#include "media/stages/playback_end.h"
#include "media/stages/sound_gate.h"

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
/// Pictures are timed at 15 a second from the first one on, whatever the camera's stamps say;
/// sound keeps its stamps and waits for the pictures it belongs to. Nothing is thrown away: while
/// nobody reads, up to a minute of the recording is kept, and then no more is taken.
///
/// A playback that cannot start raises kUnusable, a lost camera kLost, and neither twice; a camera
/// that does not answer is waited for until close().
class KvTUTKPlaybackInput : public orvelle::ChannelInput {
    Q_OBJECT
public:
    /// More than a minute at 30 pictures a second holds, or at 8 Mbit/s.
    static constexpr int kMaxPictures = 1800;
    static constexpr int64_t kMaxBytes = 64 * 1024 * 1024;
    static constexpr double kPicturesPerSec = 15.0;

    explicit KvTUTKPlaybackInput(QObject* parent = nullptr);
    ~KvTUTKPlaybackInput() override;  ///< closes

    int open() override;
    /// Waits for no answer of the camera.
    void close() override;
    bool isLive() override { return false; }
    int speed() override { return 0; }
    bool isRunning() override;
    int readVideoPacket(Packet** packet) override;
    void flush() override;
    void requestStop() override;

    /// Before open(); borrowed, outlives the input.
    void setDevice(KvTUTKDevice* device);
    /// The instant to play from; takes effect with the next open().
    void setStartTime(const QDateTime& time) { m_startTime = time; }

    /// Any thread; kNone until the input has ended by itself.
    orvelle::PlaybackEnd endReason() const { return m_endReason; }

    /// The threads' loops.
    void doOpen();
    void doRecvVideo(KvThread& thread);
    void doRecvAudio(KvThread& thread);
    /// Told by the open thread, which counts as stopped.
    void openEnded() { interruptQueues(); }

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
    void askStop();
    void tearDown();
    void fail(orvelle::PlaybackEnd reason, Event event);

    KvTUTKDevice* m_device = nullptr;  ///< fixed between open() and close(), as the three below
    QDateTime m_openTime;              ///< m_startTime at open()
    std::unique_ptr<orvelle::SoundGate> m_soundGate;
    std::unique_ptr<KvTUTKPlaybackInputThread> m_openThread;

    QDateTime m_startTime;  ///< owner

    std::unique_ptr<KvTUTKPlaybackInputThread> m_videoThread;  ///< open thread, as below
    std::unique_ptr<KvTUTKPlaybackInputThread> m_audioThread;

    uint32_t m_frameCounter = 0;  ///< pictures since the client was started; its receive thread

    orvelle::PlaybackExchange m_exchange;
    std::atomic<int> m_sid{-1};           ///< the session at open(); orders nothing, as the rest
    std::atomic<int> m_loginChannel{-1};  ///< -1 unless a login is under way
    std::atomic<orvelle::PlaybackEnd> m_endReason{orvelle::PlaybackEnd::kNone};
};
