#pragma once

#include <atomic>
#include <utility>

#include "core/thread.h"
#include "encoded_clip.h"
#include "frames/input_packet.h"
#include "frames/mutex_queue.h"
#include "media/base_player_input.h"

namespace orvelle::test {

using TestPacket = std::unique_ptr<KvBasePlayerInputPacket>;

/// An input stage that serves what the test gives it.
class MemoryInput : public KvBasePlayerInput {
public:
    /// Offers the packet to the tap, then queues it.
    void give(TestPacket packet) {
        deliverPacket(packet.get());
        queueOf(*packet).put(std::move(packet));
    }
    void giveVideo(const EncodedPicture& picture, int codec, double timeSec) {
        give(KvBasePlayerInputPacket::copyOf(picture.bytes.data(),
                                             static_cast<int>(picture.bytes.size()), picture.isKey,
                                             codec, KvBasePlayerInputPacket::kVideo, timeSec));
    }
    void giveSound(const std::vector<uint8_t>& bytes, int codec, double timeSec) {
        give(KvBasePlayerInputPacket::copyOf(bytes.data(), static_cast<int>(bytes.size()), true,
                                             codec, KvBasePlayerInputPacket::kAudio, timeSec));
    }
    /// What was given is the whole stream.
    void end() {
        m_isRunning = false;
        wakeReaders();
    }
    int videoWaiting() const { return m_video.size(); }

    int open() override { return 0; }
    void close() override {}
    void resume() override {}
    void pause() override {}
    void seek(double) override {}
    double duration() override { return -1.0; }
    int readVideoPacket(KvBasePlayerInputPacket** p) override { return read(m_video, p); }
    int readAudioPacket(KvBasePlayerInputPacket** p) override { return read(m_audio, p); }
    void releaseVideoPacket(KvBasePlayerInputPacket* packet) override { delete packet; }
    void releaseAudioPacket(KvBasePlayerInputPacket* packet) override { delete packet; }
    int openCodec(int, int, AVCodecContext**, const AVCodec**) override { return -1; }
    int closeCodec(int, AVCodecContext**, const AVCodec**) override { return -1; }
    int speed() override { return 0; }
    bool isRunning() override { return m_isRunning; }
    void flush() override {}
    bool waitForVideoPacket(const KvThread& r, int ms) override { return wait(m_video, r, ms); }
    bool waitForAudioPacket(const KvThread& r, int ms) override { return wait(m_audio, r, ms); }
    void wakeReaders() override {
        m_video.wake();
        m_audio.wake();
    }
    void requestStop() override {}

private:
    using Queue = OwningQueue<KvBasePlayerInputPacket>;

    Queue& queueOf(const KvBasePlayerInputPacket& packet) {
        return packet.mediaType() == KvBasePlayerInputPacket::kVideo ? m_video : m_audio;
    }
    static int read(Queue& queue, KvBasePlayerInputPacket** packet) {
        *packet = queue.take().release();
        return *packet ? 0 : -1;
    }
    bool wait(Queue& queue, const KvThread& reader, int timeoutMs) {
        return queue.waitForItem(timeoutMs, [&] { return reader.isStopped() || !m_isRunning; });
    }

    Queue m_video;
    Queue m_audio;
    std::atomic<bool> m_isRunning{true};
};

}  // namespace orvelle::test
