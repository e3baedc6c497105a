#pragma once

#include "core/thread.h"
#include "media/live/tutk_input.h"
#include "support/encoded_clip.h"

namespace orvelle::test {

/// An input that serves what the test gives it, as a live one or as a recording.
class MemoryInput : public KvTUTKInput {
public:
    using Packet = KvBasePlayerInputPacket;

    /// Before the decoder is started.
    void beRecording() { m_isLive = false; }
    bool isLive() override { return m_isLive; }

    /// Offers the packet to the tap, then queues it.
    void giveVideo(const EncodedPicture& picture, int codec, double timeSec,
                   bool followsLoss = false) {
        m_isVideoDone = false;
        give(m_video, picture, codec, Packet::kVideo, timeSec, followsLoss);
    }
    void giveSound(const std::vector<uint8_t>& bytes, int codec, double timeSec) {
        give(m_audio, {bytes, true}, codec, Packet::kAudio, timeSec);
    }
    /// What was given is the whole stream.
    void end() {
        m_isRunning = false;
        wakeReaders();
    }
    /// The decoder has done with everything that was given.
    bool isVideoDone() const { return m_isVideoDone; }
    int videoWaiting() const { return m_video.size(); }

    int readVideoPacket(Packet** packet) override {
        const int result = read(m_video, packet);
        m_isVideoDone = result < 0;
        return result;
    }
    int readAudioPacket(Packet** packet) override { return read(m_audio, packet); }
    bool isRunning() override { return m_isRunning; }
    bool waitForVideoPacket(const KvThread& r, int ms) override { return wait(m_video, r, ms); }
    bool waitForAudioPacket(const KvThread& r, int ms) override { return wait(m_audio, r, ms); }
    void wakeReaders() override {
        m_video.wake();
        m_audio.wake();
    }

private:
    using Queue = OwningQueue<Packet>;

    void give(Queue& queue, const EncodedPicture& unit, int codec, int mediaType, double timeSec,
              bool followsLoss = false) {
        auto packet = Packet::copyOf(unit.bytes.data(), static_cast<int>(unit.bytes.size()),
                                     unit.isKey, codec, mediaType, timeSec);
        packet->setFollowsLoss(followsLoss);
        deliverPacket(packet.get());
        queue.put(std::move(packet));
    }
    static int read(Queue& queue, Packet** packet) {
        *packet = queue.take().release();
        return *packet ? 0 : -1;
    }
    bool wait(Queue& queue, const KvThread& reader, int timeoutMs) {
        return queue.waitForItem(timeoutMs, [&] { return reader.isStopped() || !m_isRunning; });
    }

    Queue m_video, m_audio;
    bool m_isLive = true;
    std::atomic<bool> m_isRunning{true};
    std::atomic<bool> m_isVideoDone{false};
};

}  // namespace orvelle::test
