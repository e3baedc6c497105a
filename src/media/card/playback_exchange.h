#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

class KvTUTKResponse;

namespace orvelle {

/// What was asked of a camera about one playback, and what it answered.
///
///     time base -> start -> (playing) -> stop
///
/// The open thread asks and waits, the device's receive thread brings the answers. Answers that
/// are not awaited belong to an earlier playback and change nothing.
class PlaybackExchange {
public:
    enum class Request { kNone, kTimeBase, kStart, kStop };
    enum class News { kNone, kRefused, kEnded };

    /// Forgets all that was said but, where it is known already, the camera's clock. The camera
    /// will answer with messages of this type.
    void restart(uint32_t answerType, std::optional<int32_t> baseMinute = {});
    /// Before the request is sent.
    void expect(Request request);
    /// True once it is answered; false after `timeoutMs`, or at once when abandoned.
    bool wait(int timeoutMs);
    /// kRefused: the camera does not play; kEnded: it came to the
    /// end, or stopped by itself.
    News accept(const KvTUTKResponse& response);

    /// Ends all waits, now and from now on.
    void abandon();
    bool isAbandoned() const { return m_isAbandoned; }
    bool hasEnded() const { return m_hasEnded; }
    int channel() const;  ///< of the recording; -1: none
    /// Whether it was refused since the camera has no such recording, or cannot read it.
    bool isMissing() const;
    /// Nothing until the camera has told.
    std::optional<int32_t> baseMinute() const;

private:
    bool isAnswer(uint32_t type) const;
    News acceptControl(uint32_t command, int32_t result);
    void noteAnswer();

    mutable std::mutex m_mutex;  ///< guards what follows
    std::condition_variable m_answered;
    uint32_t m_answerType = 0;
    Request m_request = Request::kNone;
    bool m_isAnswered = false;
    bool m_hasStopped = false;
    int m_channel = -1;
    bool m_isMissing = false;
    std::optional<int32_t> m_baseMinute;

    std::atomic<bool> m_isAbandoned{false};  ///< written under the mutex, as below
    std::atomic<bool> m_hasEnded{false};
};

}  // namespace orvelle
