#include "render/sound_thread.h"

#include <QCoreApplication>

#include "core/tsan_annotations.h"

namespace orvelle {

SoundThread& SoundThread::instance() {
    // Never destroyed: objects of the toolkit's sound plugin belong to it until the process ends.
    static auto* const s_thread = new SoundThread;
    return *s_thread;
}

SoundThread::SoundThread() : KvThread(QStringLiteral("KvSound")) {}

void SoundThread::acquire() {
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_users;
    if (!m_isEnded)
        return;
    m_isEnded = false;
    // Under the lock, which run() has no more use for.
    waitForEnd();
    start();
}

void SoundThread::release() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (--m_users > 0)
            return;
    }
    quit();
}

bool SoundThread::hasEnded(int timeoutMs) {
    return waitForEnd(timeoutMs);
}

void SoundThread::run() {
    // A run inherits the queue of events of the one before, which it has waited for.
    tsanAcquire(this);
    tsanRelease(this);
    for (;;) {
        exec();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        tsanRelease(this);
        std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnded = m_users == 0;
        if (m_isEnded)
            return;
    }
}

}  // namespace orvelle
