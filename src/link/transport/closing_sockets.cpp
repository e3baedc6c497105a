#include "link/transport/closing_sockets.h"

#include "link/clock.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>

namespace orvelle {

namespace {

constexpr int64_t kDrainMs = 300;
constexpr std::chrono::milliseconds kLookAgain{5};

// A peer that got the goodbye may close before it has acknowledged it.
bool isUnderWay(SRTSOCKET socket) {
    return srt_getsockstate(socket) == SRTS_CONNECTED && unsentBytes(socket) > 0;
}

}  // namespace

void ClosingSockets::sayGoodbye(std::shared_ptr<SealedSocket> socket, int reason) {
    if (!socket)
        return;
    if (socket->send(encodeMessage(ByeMessage{reason})) != SendResult::Sent) {
        socket->close();
        return;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.push_back({std::move(socket), steadyMilliseconds() + kDrainMs});
}

bool ClosingSockets::collect(int64_t nowMs) {
    std::vector<Entry> done;  // closed outside the lock
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto firstDone =
        std::partition(m_entries.begin(), m_entries.end(), [nowMs](const Entry& entry) {
            return nowMs < entry.deadlineMs && isUnderWay(entry.socket->id());
        });
    done.assign(std::make_move_iterator(firstDone), std::make_move_iterator(m_entries.end()));
    m_entries.erase(firstDone, m_entries.end());
    const bool isLeft = !m_entries.empty();
    lock.unlock();
    for (const Entry& entry : done)
        entry.socket->close();
    return isLeft;
}

bool ClosingSockets::isEmpty() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_entries.empty();
}

void ClosingSockets::finish() {
    // The transport offers no event for an acknowledged goodbye.
    while (collect(steadyMilliseconds()))
        std::this_thread::sleep_for(kLookAgain);
}

}  // namespace orvelle
