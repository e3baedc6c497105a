#include "link/server/server_channel.h"

#include <algorithm>
#include <utility>

namespace orvelle {

namespace {

constexpr int64_t kTransportHoldsMs = 150;
constexpr int64_t kAdaptIntervalMs = 250;
/// How much faster than a live picture a recording starts, whose first picture builds on others.
constexpr int64_t kRecordingHaste = 2;

}  // namespace

ServerChannel::ServerChannel(std::shared_ptr<SealedSocket> socket, int64_t nominalBitsPerSecond,
                             ServerCounters& counters, MediaQueue::Kind kind)
    : m_socket(std::move(socket)),
      m_cap(kind == MediaQueue::Kind::kRecording ? kRecordingHaste * nominalBitsPerSecond
                                                 : nominalBitsPerSecond),
      m_queue(counters, kind) {
    applyCap();
}

void ServerChannel::applyCap() {
    setSocketOption(id(), SRTO_MAXBW, int64_t{m_cap.bitsPerSecond() / 8});
}

bool ServerChannel::pushVideo(const LinkFrameInfo& info, SharedFrame frame, int64_t nowMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_queue.hasRoom())
        return false;
    m_queue.pushVideo(info, std::move(frame), nowMs);
    return true;
}

bool ServerChannel::pushAudio(const LinkFrameInfo& info, SharedFrame frame, int64_t nowMs) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_queue.hasRoom())
        return false;
    m_queue.pushAudio(info, std::move(frame), nowMs);
    return true;
}

size_t ServerChannel::waitingBytes() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_queue.bytes() + unsentBytes(id());
}

void ServerChannel::skipVideo() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_queue.skipVideo();
}

bool ServerChannel::feed(int64_t nowMs) {
    adapt(nowMs);
    const auto room = static_cast<size_t>(m_cap.bitsPerSecond() / 8 * kTransportHoldsMs / 1000);
    size_t held = unsentBytes(id());
    std::lock_guard<std::mutex> lock(m_mutex);
    EncodedMessage message;
    while (held < room) {
        if (!m_queue.next(nowMs, &message)) {
            m_wasBacklogged = false;
            return false;
        }
        if (m_socket->send(message) != SendResult::Sent)
            break;
        m_queue.advance();
        held += message.size;
        m_fedBytes += static_cast<int64_t>(message.size);
    }
    return !m_queue.isEmpty();
}

void ServerChannel::adapt(int64_t nowMs) {
    const int64_t elapsedMs = nowMs - m_lastAdaptMs;
    if (elapsedMs < kAdaptIntervalMs)
        return;
    SRT_TRACEBSTATS stats;
    if (srt_bistats(id(), &stats, 0, 1) < 0)
        return;
    const int64_t ackedBytes = m_fedBytes - stats.byteSndBuf;
    SendCap::Sample sample;
    sample.elapsedMs = m_lastAdaptMs == 0 ? 0 : elapsedMs;
    sample.sentBytes = static_cast<int64_t>(stats.byteSentTotal) - m_lastSentBytes;
    sample.sentPackets = stats.pktSentTotal - m_lastSentPackets;
    sample.lostPackets = stats.pktSndLossTotal - m_lastLostPackets;
    sample.roundTripMs = stats.msRTT;
    sample.ackedBytes = std::max<int64_t>(0, ackedBytes - m_lastAckedBytes);
    sample.isBacklogged = m_wasBacklogged;
    m_lastAdaptMs = nowMs;
    m_lastAckedBytes = ackedBytes;
    m_lastSentBytes = static_cast<int64_t>(stats.byteSentTotal);
    m_lastSentPackets = stats.pktSentTotal;
    m_lastLostPackets = stats.pktSndLossTotal;
    m_wasBacklogged = true;
    const int64_t before = m_cap.bitsPerSecond();
    if (m_cap.update(sample) != before)
        applyCap();
}

}  // namespace orvelle
