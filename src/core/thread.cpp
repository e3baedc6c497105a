#include "core/thread.h"

#include "core/tsan_annotations.h"
#include "platform/thread_name.h"

#include <chrono>

KvThread::KvThread(const QString& name, QObject* parent) : QThread(parent) {
    setObjectName(name);
    // Direct: both run on the thread itself.
    connect(
        this, &QThread::started, this, [name] { orvelle::nameThisThread(name.toStdString()); },
        Qt::DirectConnection);
    // After run() and before wait() can return.
    connect(
        this, &QThread::finished, this, [this] { orvelle::tsanRelease(this); },
        Qt::DirectConnection);
}

KvThread::~KvThread() = default;

bool KvThread::isStopped() const {
    return m_stopped.load();
}

void KvThread::stop() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopped.store(true);
    // Notified under the lock: a thread that ends on it may be deleted right afterwards.
    m_stopSignal.notify_all();
}

void KvThread::waitForEnd() {
    wait();
    orvelle::tsanAcquire(this);
}

bool KvThread::waitForEnd(int timeoutMs) {
    if (timeoutMs <= 0) {
        waitForEnd();
        return true;
    }
    if (!wait(static_cast<unsigned long>(timeoutMs)))
        return false;
    orvelle::tsanAcquire(this);
    return true;
}

bool KvThread::sleepUnlessStopped(int ms) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_stopSignal.wait_for(lock, std::chrono::milliseconds(ms),
                                 [this] { return m_stopped.load(); });
}

bool KvThread::isThreadRunning(const KvThread* thread) {
    return thread && thread->isRunning();
}

bool KvThread::isThreadStopped(const KvThread* thread) {
    return !thread || thread->isStopped();
}
