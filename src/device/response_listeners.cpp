#include "device/response_listeners.h"

#include <algorithm>

namespace orvelle {

std::unique_lock<std::mutex> ResponseListeners::lockUnlessDispatching() {
    if (m_dispatcher == std::this_thread::get_id())
        return {};
    return std::unique_lock<std::mutex>(m_mutex);
}

void ResponseListeners::add(void* object, Callback callback) {
    const auto lock = lockUnlessDispatching();
    const auto isSame = [object](const Entry& entry) { return entry.object == object; };
    if (std::none_of(m_entries.begin(), m_entries.end(), isSame))
        m_entries.push_back({object, callback});
}

void ResponseListeners::remove(void* object) {
    const auto lock = lockUnlessDispatching();
    for (Entry& entry : m_entries) {
        if (entry.object == object)
            entry.object = nullptr;
    }
    if (lock)
        compact();
}

void ResponseListeners::dispatch(KvTUTKResponse& response) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_dispatcher = std::this_thread::get_id();
    // By index: a listener may append to the table.
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const Entry entry = m_entries[i];
        if (entry.object)
            entry.callback(entry.object, &response);
    }
    m_dispatcher = std::thread::id();
    compact();
}

void ResponseListeners::compact() {
    const auto isRemoved = [](const Entry& entry) { return !entry.object; };
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(), isRemoved), m_entries.end());
}

}  // namespace orvelle
