#include "media/channel_input.h"

#include "core/thread.h"
#include "link/av.h"

namespace orvelle {

namespace {

int handOver(std::unique_ptr<KvBasePlayerInputPacket> taken, KvBasePlayerInputPacket** packet) {
    *packet = taken.release();
    return *packet ? 0 : -1;
}

}  // namespace

int ChannelInput::readVideoPacket(Packet** packet) {
    return handOver(m_videoQueue ? m_videoQueue->take() : nullptr, packet);
}

int ChannelInput::readAudioPacket(Packet** packet) {
    return handOver(m_audioQueue ? m_audioQueue->take() : nullptr, packet);
}

void ChannelInput::releaseVideoPacket(Packet* packet) {
    delete packet;
}

void ChannelInput::releaseAudioPacket(Packet* packet) {
    delete packet;
}

void ChannelInput::flush() {
    if (m_videoQueue)
        m_videoQueue->clear();
    if (m_audioQueue)
        m_audioQueue->clear();
}

bool ChannelInput::waitForVideoPacket(const KvThread& reader, int timeoutMs) {
    return m_videoQueue &&
           m_videoQueue->waitForItem(timeoutMs, [&reader] { return reader.isStopped(); });
}

bool ChannelInput::waitForAudioPacket(const KvThread& reader, int timeoutMs) {
    return m_audioQueue &&
           m_audioQueue->waitForItem(timeoutMs, [&reader] { return reader.isStopped(); });
}

void ChannelInput::wakeReaders() {
    if (m_videoQueue)
        m_videoQueue->wake();
    if (m_audioQueue)
        m_audioQueue->wake();
}

void ChannelInput::bind(int avIndex) {
    m_lostBefore = avIndex >= 0 ? avLostVideoFrames(avIndex) : 0;
    m_avIndex = avIndex;
}

void ChannelInput::wakeReceivers() {
    const int index = m_avIndex;
    if (index >= 0)
        avWake(index);
}

void ChannelInput::createQueues() {
    m_videoQueue = std::make_unique<VideoPacketQueue>();
    m_audioQueue = std::make_unique<OwningQueue<Packet>>();
}

void ChannelInput::interruptQueues() {
    m_videoQueue->interrupt();
    m_audioQueue->interrupt();
}

void ChannelInput::destroyQueues() {
    m_audioQueue.reset();
    m_videoQueue.reset();
}

bool ChannelInput::reportOnce(int32_t event) {
    const bool isFirst = !m_reported.exchange(true);
    if (isFirst)
        notify(event);
    return isFirst;
}

}  // namespace orvelle
