#include "device/request_queue.h"

namespace orvelle {
namespace {

// A send loop that stalls keeps no more than this; pan-tilt presses are the densest traffic.
constexpr size_t kMaxRequests = 256;

}  // namespace

void RequestQueue::open(const KvTUTKRequest& first) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.clear();
    m_requests.push_back(first);
    m_open = true;
}

void RequestQueue::close() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.clear();
    m_open = false;
    m_changed.notify_all();
}

bool RequestQueue::push(const KvTUTKRequest& request) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_open || m_requests.size() >= kMaxRequests)
        return false;
    m_requests.push_back(request);
    m_changed.notify_all();
    return true;
}

std::optional<KvTUTKRequest> RequestQueue::take(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_until(lock, deadline, [this] { return !m_open || !m_requests.empty(); });
    if (m_requests.empty())
        return std::nullopt;
    const KvTUTKRequest oldest = m_requests.front();
    m_requests.pop_front();
    return oldest;
}

}  // namespace orvelle
