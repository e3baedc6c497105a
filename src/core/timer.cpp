#include "core/timer.h"

#include "core/log.h"

KvTimerThread::KvTimerThread(KvTimer* timer, int intervalMs)
    : KvThread(QStringLiteral("timer")), m_timer(timer), m_intervalMs(intervalMs) {}

void KvTimerThread::run() {
    if (!sleepUnlessStopped(m_intervalMs))
        m_timer->timeout();
}

KvTimer::KvTimer(Callback callback, void* context, QObject* parent)
    : QObject(parent), m_callback(callback), m_context(context) {
    // Direct, since the owner's thread may have no event loop that would deliver them.
    connect(this, &KvTimer::startSignal, this, &KvTimer::_doStart, Qt::DirectConnection);
    connect(this, &KvTimer::stopSignal, this, &KvTimer::_doStop, Qt::DirectConnection);
}

KvTimer::~KvTimer() {
    _doStop();
}

void KvTimer::_doStart(int ms) {
    orvelle::log("KvTimer start\n", orvelle::kLogInfo);
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!endThread(lock))
        return;
    m_thread = std::make_unique<KvTimerThread>(this, ms);
    m_thread->start(QThread::InheritPriority);
}

void KvTimer::_doStop() {
    orvelle::log("KvTimer stop\n", orvelle::kLogInfo);
    std::unique_lock<std::mutex> lock(m_mutex);
    endThread(lock);
}

void KvTimer::timeout() {
    orvelle::log("%p KvTimer timeout\n", orvelle::kLogInfo, static_cast<void*>(this));
    m_callback(m_context);
}

// Leaves no thread behind and the lock held; false when called from that thread itself.
bool KvTimer::endThread(std::unique_lock<std::mutex>& lock) {
    while (m_thread) {
        m_thread->stop();
        if (QThread::currentThread() == m_thread.get())
            return false;
        if (m_joining) {
            m_joined.wait(lock);
            continue;
        }
        m_joining = true;
        lock.unlock();
        m_thread->waitForEnd();
        lock.lock();
        m_thread.reset();
        m_joining = false;
        m_joined.notify_all();
    }
    return true;
}
