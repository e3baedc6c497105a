#pragma once

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

#include "media/player/base_player.h"

namespace orvelle::test {

/// What a player or a recorder told its owner, on whichever thread.
class EventLog {
public:
    template <class Teller>
    explicit EventLog(Teller& teller) {
        teller.setCallback(this, [](void* log, int32_t event, double a, double b) -> int32_t {
            auto& self = *static_cast<EventLog*>(log);
            const std::lock_guard<std::mutex> lock(self.m_mutex);
            // Neither a live picture nor a recording has a duration.
            self.m_events.push_back(a > 0.0 && b >= 0.0 ? -1 : event);
            self.lastValue = a;
            return 0;
        });
    }
    int count(int event) const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return static_cast<int>(std::count(m_events.begin(), m_events.end(), event));
    }
    std::vector<int> take(int without = -2) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_events.erase(std::remove(m_events.begin(), m_events.end(), without), m_events.end());
        return std::move(m_events);
    }

    std::atomic<double> lastValue{0.0};  ///< what the last event carried

private:
    mutable std::mutex m_mutex;  ///< guards the one below
    std::vector<int> m_events;
};

}  // namespace orvelle::test
