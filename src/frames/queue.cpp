#include "frames/queue.h"

#include <utility>

KvQueue::~KvQueue() {
    discardAll();
}

void* KvQueue::first() const {
    return m_head ? m_head->item : nullptr;
}

void* KvQueue::last() const {
    return m_tail ? m_tail->item : nullptr;
}

void* KvQueue::pop() {
    if (!m_head)
        return nullptr;
    Node* node = m_head;
    m_head = node->next;
    if (!m_head)
        m_tail = nullptr;
    --m_count;
    void* item = node->item;
    delete node;
    return item;
}

void KvQueue::push(void* item) {
    Node* node = new Node{item, nullptr};
    if (m_head)
        m_tail->next = node;
    else
        m_head = node;
    m_tail = node;
    ++m_count;
}

void KvQueue::clear() {
    discardAll();
}

void KvQueue::swapItems(KvQueue& other) {
    std::swap(m_count, other.m_count);
    std::swap(m_head, other.m_head);
    std::swap(m_tail, other.m_tail);
}

void KvQueue::discardAll() {
    while (m_head) {
        void* item = KvQueue::pop();
        if (m_freeItem)
            m_freeItem(item);
    }
}
