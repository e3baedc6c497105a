#include "render/sound_thread.h"

#include <QLoggingCategory>

#include <cstdlib>

#include "core/tsan_annotations.h"

namespace orvelle {
namespace {

Q_LOGGING_CATEGORY(lcRender, "orvelle.render")

// A hung sound server must not hang the exit.
constexpr int kEndTimeoutMs = 2000;

}  // namespace

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
    if (waitForEnd(kEndTimeoutMs))
        return;
    qCWarning(lcRender, "the sound server does not answer; its thread is left behind");
    // The destructors of the toolkit's sound plugin would wait for that thread or abort.
    std::atexit([] {
        if (instance().isRunning())
            std::_Exit(EXIT_SUCCESS);
    });
}

void SoundThread::run() {
    tsanRelease(this);
    for (;;) {
        exec();
        std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnded = m_users == 0;
        if (m_isEnded)
            return;
    }
}

}  // namespace orvelle
