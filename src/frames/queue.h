#pragma once

/// First-in first-out list of untyped items, without a lock: the core of MutexQueue.
class KvQueue {
public:
    /// Called once for each item that clear() discards; may be null.
    using FreeItem = void (*)(void* item);

    struct Node {
        void* item;
        Node* next;
    };

    explicit KvQueue(FreeItem freeItem = nullptr) : m_freeItem(freeItem) {}
    virtual ~KvQueue();  ///< clears
    KvQueue(const KvQueue&) = delete;
    KvQueue& operator=(const KvQueue&) = delete;

    virtual void* first() const;  ///< null when empty; not removed
    virtual void* last() const;
    virtual void* pop();  ///< null when empty; the caller owns the item
    virtual void push(void* item);
    virtual void clear();
    virtual int size() const { return m_count; }
    virtual Node* headNode() const { return m_head; }
    virtual Node* tailNode() const { return m_tail; }

    /// Exchanges the items, not the free functions.
    void swapItems(KvQueue& other);

private:
    void discardAll();

    int m_count = 0;
    FreeItem m_freeItem;
    Node* m_head = nullptr;
    Node* m_tail = nullptr;
};
