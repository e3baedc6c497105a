#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "frames/queue.h"

/// The queue between two stages: a KvQueue under a mutex, unbounded, never blocking.
///
/// It owns its items until they are popped. Producers bound it themselves by size(). A consumer
/// with nothing to do waits on it instead of polling; interrupt() ends all waits, now and
/// later, so a stage calls it right after asking its threads to stop. Any thread.
class MutexQueue {
public:
    explicit MutexQueue(KvQueue::FreeItem freeItem);
    virtual ~MutexQueue();
    MutexQueue(const MutexQueue&) = delete;
    MutexQueue& operator=(const MutexQueue&) = delete;

    virtual void* first() const;
    virtual void* last() const;
    virtual void* pop();
    virtual void push(void* item);
    virtual void clear();
    virtual int size() const;

    /// For callers that walk the nodes themselves; the nodes are valid under the lock only.
    void lock() const;
    void unlock() const;
    KvQueue::Node* headNode() const;
    KvQueue::Node* tailNode() const;

    /// Waits until an item waits, `timeoutMs` passed or interrupt() was called; true when the
    /// queue is not empty.
    bool waitForItem(int timeoutMs) const;
    /// Waits until at most `maxItems` items wait; true when so.
    bool waitForSpace(int maxItems, int timeoutMs) const;
    /// Ends all waits, now and from now on; the queue stays usable.
    void interrupt();

    /// As waitForItem(), but also ends once `stop` is true; it must only read an atomic. Whoever
    /// makes it true calls wake() next. For consumers that stop while their producer goes on.
    template <class StopCheck>
    bool waitForItem(int timeoutMs, StopCheck stop) const {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                           [&] { return m_interrupted || m_queue.size() > 0 || stop(); });
        return m_queue.size() > 0;
    }
    /// Waits until `enough` is true of what waits, asked after each change; else as above.
    template <class StopCheck>
    void waitForItems(int timeoutMs, StopCheck enough) const {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                           [&] { return m_interrupted || enough(); });
    }
    /// The same for waitForSpace(): for producers that stop while their consumer pauses.
    template <class StopCheck>
    bool waitForSpace(int maxItems, int timeoutMs, StopCheck stop) const {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                           [&] { return m_interrupted || m_queue.size() <= maxItems || stop(); });
        return m_queue.size() <= maxItems;
    }
    /// Makes all waits ask their stop check again.
    void wake() const {
        // Taken and released so that a wait between its check and its sleep is not missed.
        m_mutex.lock();
        m_mutex.unlock();
        m_changed.notify_all();
    }

private:
    const KvQueue::FreeItem m_freeItem;

    mutable std::mutex m_mutex;  ///< guards everything below
    mutable std::condition_variable m_changed;
    KvQueue m_queue;
    bool m_interrupted = false;
};

/// A MutexQueue of one item type, with ownership in the types.
template <class Item>
class OwningQueue : public MutexQueue {
public:
    OwningQueue() : MutexQueue([](void* item) { delete static_cast<Item*>(item); }) {}

    void put(std::unique_ptr<Item> item) { push(item.release()); }
    std::unique_ptr<Item> take() { return std::unique_ptr<Item>(static_cast<Item*>(pop())); }
};
