#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "frames/frame_info.h"
#include "media/stages/base_player_input.h"
#include "media/stages/sequence_gate.h"
#include "media/stages/video_packet_queue.h"

namespace orvelle {

/// What inputs that read one AV channel have in common: a video and an audio queue of packets and
/// the loops that fill them; concrete ones own the threads and say what becomes of a frame.
///
/// The loops call virtual functions of the input, so the destructor of a concrete input begins
/// with close().
class ChannelInput : public KvBasePlayerInput {
public:
    using Packet = KvBasePlayerInputPacket;
    using KvBasePlayerInput::KvBasePlayerInput;

    void resume() override {}
    void pause() override {}
    void seek(double) override {}
    double duration() override { return -1.0; }
    int readVideoPacket(Packet** packet) override;
    int readAudioPacket(Packet** packet) override;
    void releaseVideoPacket(Packet* packet) override;
    void releaseAudioPacket(Packet* packet) override;
    int openCodec(int, int, AVCodecContext**, const AVCodec**) override { return -1; }
    int closeCodec(int, AVCodecContext**, const AVCodec**) override { return -1; }
    void flush() override;
    bool waitForVideoPacket(const KvThread& reader, int timeoutMs) override;
    bool waitForAudioPacket(const KvThread& reader, int timeoutMs) override;
    void wakeReaders() override;

protected:
    // --- between open() and close(), for the concrete input ---

    /// -1: none. A channel is bound before the loops run.
    void bind(int avIndex);
    int avIndex() const { return m_avIndex; }
    bool isBound() const { return m_avIndex >= 0; }
    void wakeReceivers();

    void createQueues();
    void interruptQueues();
    void destroyQueues();
    VideoPacketQueue& videoQueue() { return *m_videoQueue; }
    OwningQueue<Packet>& audioQueue() { return *m_audioQueue; }

    void clearReport() { m_reported = false; }
    /// Raises the first event since clearReport(); later ones only tell the same again.
    bool reportOnce(int32_t event);

    /// The loops of the receive threads; each ends with the channel or when isOver().
    void receiveVideo(KvThread& thread);
    void receiveAudio(KvThread& thread);

    // --- on the receive threads ---

    /// These three are asked under the channel's lock and only read atomics; whoever changes what
    /// they tell calls wakeReceivers() next.
    virtual bool isOver(const KvThread& thread) const;
    /// The camera sends nothing new: what is still on the way is taken, then the loop ends.
    virtual bool isEnding() const { return false; }
    /// The camera was told to send no sound: what still comes is taken and thrown away, so that
    /// none of it is left over when it sends again.
    virtual bool isSoundResting() const { return false; }
    /// Whether the channel gives nothing more after this code.
    virtual bool isEnd(int result) const;
    virtual void channelEnded(MediaKind kind) = 0;
    /// Keeps the queues within bounds; called before each frame, may wait.
    virtual void boundVideo(const KvThread& thread) = 0;
    virtual void boundAudio(const KvThread& thread) = 0;
    /// A packet that the tap has seen.
    virtual void storeVideo(std::unique_ptr<Packet> packet) = 0;
    virtual void storeAudio(std::unique_ptr<Packet> packet) = 0;

private:
    /// One frame, or the code that came in its place.
    struct Received {
        int result = 0;  ///< bytes, or a negative code
        uint32_t number = 0;
        std::array<char, FrameInfo::kBytes> bytes{};

        FrameInfo info() const;
    };

    struct ReceiveLoop {
        KvThread& thread;
        int lastError = 0;  ///< the code logged last; 0: none
    };

    /// How a wait for a frame ended.
    enum class Wait { kWoken, kInVain, kNothingLeft };

    Received takeVideo(char* buffer);
    Received takeAudio(char* buffer);
    template <class WaitOnChannel>
    Wait wait(const KvThread& thread, WaitOnChannel waitOnChannel);
    Wait waitForVideo(const KvThread& thread);
    Wait waitForAudio(const KvThread& thread);
    void acceptVideo(const Received& frame, const char* data, SequenceGate& gate);
    void acceptAudio(const Received& frame, const char* data);
    bool goesOnAfter(const char* call, int result, MediaKind kind, ReceiveLoop& loop);
    void end(const char* call, int result, MediaKind kind);
    void noteVideoLoss(const Received& gap, SequenceGate& gate);

    std::unique_ptr<VideoPacketQueue> m_videoQueue;  ///< fixed while threads run, as below
    std::unique_ptr<OwningQueue<Packet>> m_audioQueue;
    uint32_t m_lostBefore = 0;  ///< the channel's count when it was bound

    std::atomic<int> m_avIndex{-1};
    std::atomic<bool> m_reported{false};  ///< orders nothing
};

}  // namespace orvelle
