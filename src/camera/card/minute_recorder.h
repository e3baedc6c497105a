#pragma once

#include <optional>
#include <vector>

#include "camera/card/card_store.h"
#include "camera/card/recording_writer.h"

namespace orvelle {

/// Cuts a stream into recordings of one minute on a card. Each begins with a key frame and is
/// named by the second of it; those that follow begin whole minutes later, so that they make
/// one run. A clock that is set, a pause, or another codec begins a new run. One thread.
class MinuteRecorder {
public:
    /// `store` is borrowed.
    MinuteRecorder(CardStore* store, const FeedFormat& format);
    /// Leaves the current recording unfinished.
    ~MinuteRecorder() = default;

    /// `wallOffsetUs` is what the wall clock is ahead of the camera clock now.
    void take(const EncodedFrame& frame, int64_t wallOffsetUs);
    /// Whether a minute is over and waits for a key frame; true once for each.
    bool takeKeyRequest();

    /// Finishes the current recording.
    void close();
    /// Gives it up: its card is gone or about to be emptied.
    void drop();

private:
    bool isStartDue(const EncodedFrame& frame, int64_t wallOffsetUs) const;
    void begin(const EncodedFrame& key, int64_t wallOffsetUs);
    void hold(const EncodedFrame& frame);
    void openFile();
    void write(const EncodedFrame& frame);
    void fail(const QString& reason);
    int64_t minuteBytes() const;

    CardStore* const m_store;
    const FeedFormat m_format;

    RecordingWriter m_writer;
    bool m_isRunning = false;
    int64_t m_startSec = 0;
    int64_t m_offsetUs = 0;
    uint16_t m_codecId = 0;
    bool m_isKeyRequested = false;
    bool m_hasRequestedKey = false;
    std::optional<RecordedSound> m_sound;
    bool m_isSoundAwaited = true;  ///< only by the first recording
    std::vector<EncodedFrame> m_held;
};

}  // namespace orvelle
