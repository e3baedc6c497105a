#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "frames/frame_info.h"
#include "media/base_player_input.h"
#include "media/byte_rate.h"
#include "media/sequence_gate.h"
#include "media/video_packet_queue.h"

class KvTUTKDevice;
class KvTUTKInputThread;

/// Live picture and sound of one camera.
///
/// open() asks the camera to stream and starts a video and an audio receive thread; each puts
/// packets into its own queue and throws backlog away, so that the live view never lags. Both are
/// bound to the AV channel that the device has at open(): when that ends they end, event kLost is
/// raised once, and the owner opens a new input on the device's next session.
class KvTUTKInput : public KvBasePlayerInput {
    Q_OBJECT
public:
    explicit KvTUTKInput(QObject* parent = nullptr);
    ~KvTUTKInput() override;  ///< closes

    int open() override;
    void close() override;
    void resume() override {}
    void pause() override {}
    void seek(double) override {}
    double duration() override { return -1.0; }
    int readVideoPacket(KvBasePlayerInputPacket** packet) override;
    int readAudioPacket(KvBasePlayerInputPacket** packet) override;
    void releaseVideoPacket(KvBasePlayerInputPacket* packet) override;
    void releaseAudioPacket(KvBasePlayerInputPacket* packet) override;
    int openCodec(int, int, AVCodecContext**, const AVCodec**) override { return -1; }
    int closeCodec(int, AVCodecContext**, const AVCodec**) override { return -1; }
    int speed() override;
    bool isRunning() override;
    void flush() override;
    bool waitForVideoPacket(const KvThread& reader, int timeoutMs) override;
    bool waitForAudioPacket(const KvThread& reader, int timeoutMs) override;
    void wakeReaders() override;
    void requestStop() override;

    /// Before open(); borrowed, outlives the input.
    virtual void setDevice(KvTUTKDevice* device);
    virtual int startDevice();
    virtual void stopDevice();
    virtual void startThreads();
    virtual void stopThreads();

    /// The loops of the receive threads.
    void doRecvVideo(KvThread& thread);
    void doRecvAudio(KvThread& thread);
    /// Told by a receive thread whose loop is over and which counts as stopped.
    void receiveEnded();

private:
    /// One frame, or the code that came in its place.
    struct Received {
        int result = 0;  ///< bytes, or a negative code
        uint32_t number = 0;
        std::array<char, orvelle::FrameInfo::kBytes> info{};
    };

    struct ReceiveLoop {
        KvThread& thread;
        int lastError = 0;  ///< the code logged last; 0: none
    };

    bool isBound() const { return m_avIndex >= 0; }
    void limitVideoBacklog();
    void limitAudioBacklog();
    Received receiveVideo(char* buffer);
    Received receiveAudio(char* buffer);
    bool waitForAudio(const KvThread& thread);
    void acceptVideo(const Received& frame, const char* data, orvelle::SequenceGate& gate);
    void acceptAudio(const Received& frame, const char* data);
    bool goesOnAfter(const char* call, int result, ReceiveLoop& loop);
    void end(const char* call, int result);
    void noteVideoLoss(const Received& gap, orvelle::SequenceGate& gate);
    void reportOnce(int32_t event);

    KvTUTKDevice* m_device = nullptr;  ///< fixed between open() and close(), as all below
    int m_avIndex = -1;                ///< -1 when the device had no channel at open()
    uint32_t m_lostBefore = 0;         ///< the channel's count at open()
    std::unique_ptr<orvelle::VideoPacketQueue> m_videoQueue;
    std::unique_ptr<OwningQueue<KvBasePlayerInputPacket>> m_audioQueue;
    std::unique_ptr<KvTUTKInputThread> m_videoThread;
    std::unique_ptr<KvTUTKInputThread> m_audioThread;

    orvelle::ByteRate m_rate;
    std::atomic<bool> m_reported{false};  ///< the end was told; orders nothing
};
