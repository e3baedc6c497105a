#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

#include "device/tutk_request.h"

namespace orvelle {

/// The commands that wait for a session's send loop, oldest first. Any thread.
///
/// It takes commands only while it is open, so that none of an old session reaches the next.
class RequestQueue {
public:
    using Clock = std::chrono::steady_clock;

    /// Opens the queue with `first` as its only command.
    void open(const KvTUTKRequest& first);
    /// Discards what waits, refuses what comes and ends a running take().
    void close();

    /// False when the queue is closed or full.
    bool push(const KvTUTKRequest& request);

    /// Waits for the oldest command; empty when `deadline` passed or the queue is closed.
    std::optional<KvTUTKRequest> take(Clock::time_point deadline);

private:
    std::mutex m_mutex;  ///< guards everything below
    std::condition_variable m_changed;
    std::deque<KvTUTKRequest> m_requests;
    bool m_open = false;
};

}  // namespace orvelle
