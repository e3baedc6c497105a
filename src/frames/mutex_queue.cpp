#include "frames/mutex_queue.h"

#include <chrono>

MutexQueue::MutexQueue(KvQueue::FreeItem freeItem) : m_freeItem(freeItem), m_queue(freeItem) {}

MutexQueue::~MutexQueue() = default;

void* MutexQueue::first() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_queue.first();
}

void* MutexQueue::last() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_queue.last();
}

void* MutexQueue::pop() {
    void* item = nullptr;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        item = m_queue.pop();
    }
    m_changed.notify_all();
    return item;
}

void MutexQueue::push(void* item) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.push(item);
    }
    m_changed.notify_all();
}

void MutexQueue::clear() {
    // Freeing dozens of packets takes a while: the other side must not wait for that.
    KvQueue discarded(m_freeItem);
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.swapItems(discarded);
    }
    m_changed.notify_all();
}

int MutexQueue::size() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_queue.size();
}

void MutexQueue::lock() const {
    m_mutex.lock();
}

void MutexQueue::unlock() const {
    m_mutex.unlock();
}

KvQueue::Node* MutexQueue::headNode() const {
    return m_queue.headNode();
}

KvQueue::Node* MutexQueue::tailNode() const {
    return m_queue.tailNode();
}

bool MutexQueue::waitForItem(int timeoutMs) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                       [this] { return m_interrupted || m_queue.size() > 0; });
    return m_queue.size() > 0;
}

bool MutexQueue::waitForSpace(int maxItems, int timeoutMs) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                       [&] { return m_interrupted || m_queue.size() <= maxItems; });
    return m_queue.size() <= maxItems;
}

void MutexQueue::interrupt() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_interrupted = true;
    }
    m_changed.notify_all();
}
