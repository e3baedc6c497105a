#pragma once

#include "link/server/link_server.h"
#include "link/wire/wire.h"

#include <atomic>
#include <deque>

namespace orvelle {

using SharedFrame = std::shared_ptr<const std::vector<uint8_t>>;

/// Totals of a server over all its clients; any thread.
struct ServerCounters {
    std::atomic<uint64_t> videoFramesSent{0};
    std::atomic<uint64_t> videoFramesDropped{0};
    std::atomic<uint64_t> audioFramesSent{0};
};

/// Frames of one channel on their way to the transport: numbers them, cuts them into messages,
/// sound before pictures.
///
/// Of a live picture it drops what has grown too old in whole groups of pictures, up to the next
/// key frame and never a frame that is begun. Of a recording it drops nothing, but takes no more
/// when enough waits.
///
/// Not locked: its channel's mutex guards it. Times are given, so that a test has its own clock.
class MediaQueue {
public:
    enum class Kind { kLive, kRecording };

    explicit MediaQueue(ServerCounters& counters, Kind kind = Kind::kLive)
        : m_counters(counters), m_kind(kind) {}

    /// Whether it takes another frame now; always of a live picture.
    bool hasRoom() const;

    /// Takes a frame of 1 to kMaxVideoFrameBytes.
    void pushVideo(const LinkFrameInfo& info, SharedFrame frame, int64_t nowMs);
    void pushAudio(const LinkFrameInfo& info, SharedFrame frame, int64_t nowMs);
    /// A frame was refused: its number is left out, and pictures go on at the next key frame.
    void skipVideo();

    /// Drops what is too old and encodes the next message; false when none waits.
    bool next(int64_t nowMs, EncodedMessage* message);
    /// The message that next() gave was handed over.
    void advance();

    bool isEmpty() const { return m_video.empty() && m_audio.empty(); }
    /// Of the frames that wait, the one that is begun as a whole.
    size_t bytes() const { return m_bytes; }

private:
    struct Item {
        uint32_t number;
        FrameInfoBytes info;
        SharedFrame frame;
        int64_t queuedMs;
        bool isKey;
    };

    void append(std::deque<Item>& queue, Item item);
    void removeFirst(std::deque<Item>& queue);
    static FrameInfoBytes infoBytes(const LinkFrameInfo& info, uint32_t number);
    void dropStale(int64_t nowMs);
    void dropGroupAt(size_t position);

    ServerCounters& m_counters;
    const Kind m_kind;
    size_t m_bytes = 0;
    std::deque<Item> m_video;
    std::deque<Item> m_audio;
    uint32_t m_nextVideoNumber = 0;
    uint32_t m_nextAudioNumber = 0;
    uint16_t m_nextFragment = 0;  ///< of the first picture; above 0 it is begun
    bool m_isAudioNext = false;   ///< what the last next() gave
    bool m_awaitsKey = false;
};

}  // namespace orvelle
