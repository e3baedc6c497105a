#include "link/server/media_queue.h"

#include "link/wire/byte_order.h"

#include <algorithm>
#include <utility>

namespace orvelle {

namespace {

constexpr int64_t kMaxAgeMs = 600;
constexpr size_t kMaxVideoFrames = 200;  // whatever their age
constexpr size_t kMaxAudioFrames = 50;
// Of a recording: enough for the transport to go on while its reader looks away.
constexpr size_t kRecordingBytes = 512 * 1024;
constexpr size_t kRecordingFrames = 256;

}  // namespace

FrameInfoBytes MediaQueue::infoBytes(const LinkFrameInfo& info, uint32_t number) {
    FrameInfoBytes bytes{};
    putU16(&bytes[0], info.codecId);
    bytes[2] = info.flags;
    bytes[5] = static_cast<uint8_t>(number);
    putU32(&bytes[12], info.timestampMs);
    return bytes;
}

bool MediaQueue::hasRoom() const {
    return m_kind == Kind::kLive ||
           (m_bytes < kRecordingBytes && m_video.size() + m_audio.size() < kRecordingFrames);
}

void MediaQueue::append(std::deque<Item>& queue, Item item) {
    m_bytes += item.frame->size();
    queue.push_back(std::move(item));
}

void MediaQueue::removeFirst(std::deque<Item>& queue) {
    m_bytes -= queue.front().frame->size();
    queue.pop_front();
}

void MediaQueue::pushVideo(const LinkFrameInfo& info, SharedFrame frame, int64_t nowMs) {
    const uint32_t number = m_nextVideoNumber++;
    const bool isKey = info.flags != 0;
    if (m_awaitsKey && !isKey) {
        ++m_counters.videoFramesDropped;
        return;
    }
    m_awaitsKey = false;
    append(m_video, {number, infoBytes(info, number), std::move(frame), nowMs, isKey});
    dropStale(nowMs);
}

void MediaQueue::pushAudio(const LinkFrameInfo& info, SharedFrame frame, int64_t nowMs) {
    const uint32_t number = m_nextAudioNumber++;
    if (m_kind == Kind::kLive && m_audio.size() >= kMaxAudioFrames)
        removeFirst(m_audio);
    append(m_audio, {number, infoBytes(info, number), std::move(frame), nowMs, false});
}

void MediaQueue::skipVideo() {
    ++m_nextVideoNumber;
    ++m_counters.videoFramesDropped;
    m_awaitsKey = true;
}

void MediaQueue::dropGroupAt(size_t position) {
    const auto first = m_video.begin() + static_cast<std::ptrdiff_t>(position);
    const auto last =
        std::find_if(first + 1, m_video.end(), [](const Item& item) { return item.isKey; });
    // Only ever set here: dropping this group does not make up for a frame refused behind it.
    m_awaitsKey = m_awaitsKey || last == m_video.end();
    m_counters.videoFramesDropped += static_cast<uint64_t>(last - first);
    for (auto item = first; item != last; ++item)
        m_bytes -= item->frame->size();
    m_video.erase(first, last);
}

void MediaQueue::dropStale(int64_t nowMs) {
    if (m_kind == Kind::kRecording)
        return;
    const size_t first = m_nextFragment > 0 ? 1 : 0;
    while (m_video.size() > first &&
           (nowMs - m_video[first].queuedMs > kMaxAgeMs || m_video.size() > kMaxVideoFrames))
        dropGroupAt(first);
    while (!m_audio.empty() && nowMs - m_audio.front().queuedMs > kMaxAgeMs)
        removeFirst(m_audio);
}

bool MediaQueue::next(int64_t nowMs, EncodedMessage* message) {
    dropStale(nowMs);
    m_isAudioNext = !m_audio.empty();
    if (isEmpty())
        return false;
    const Item& item = m_isAudioNext ? m_audio.front() : m_video.front();
    FrameFragment fragment;
    fragment.isVideo = !m_isAudioNext;
    fragment.index = m_isAudioNext ? uint16_t{0} : m_nextFragment;
    fragment.count = fragmentCount(item.frame->size());
    fragment.number = item.number;
    fragment.totalBytes = static_cast<uint32_t>(item.frame->size());
    fragment.info = item.info;
    fragment.data = item.frame->data() + fragment.index * kFragmentPayloadBytes;
    fragment.size = fragmentBytes(item.frame->size(), fragment.index);
    *message = encodeMessage(fragment);
    return true;
}

void MediaQueue::advance() {
    if (m_isAudioNext) {
        removeFirst(m_audio);
        ++m_counters.audioFramesSent;
        return;
    }
    if (++m_nextFragment < fragmentCount(m_video.front().frame->size()))
        return;
    m_nextFragment = 0;
    removeFirst(m_video);
    ++m_counters.videoFramesSent;
}

}  // namespace orvelle
