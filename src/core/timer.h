#pragma once

#include "core/thread.h"

#include <QObject>

#include <condition_variable>
#include <memory>
#include <mutex>

class KvTimer;

/// The one-shot wait of a KvTimer, on a thread of its own.
class KvTimerThread : public KvThread {
public:
    KvTimerThread(KvTimer* timer, int intervalMs);
    void run() override;

private:
    KvTimer* const m_timer;
    const int m_intervalMs;
};

/// A one-shot timer that calls back on a worker thread, so its owner needs no event loop.
///
/// Emit startSignal() to arm it and stopSignal() to disarm it, from any thread; both act before
/// the emit returns. After a stop the callback is not running and will not run. Two cases of the
/// callback's own thread differ, since it cannot wait for itself: there a stop returns at once
/// and the next stop, start or destruction elsewhere waits; a start is refused. Arming an armed
/// timer disarms it first.
class KvTimer : public QObject {
    Q_OBJECT

public:
    using Callback = void (*)(void* context);

    KvTimer(Callback callback, void* context, QObject* parent = nullptr);
    ~KvTimer() override;

signals:
    void startSignal(int ms);
    void stopSignal();

private slots:
    void _doStart(int ms);
    void _doStop();

private:
    friend class KvTimerThread;

    void timeout();
    bool endThread(std::unique_lock<std::mutex>& lock);

    const Callback m_callback;
    void* const m_context;

    std::mutex m_mutex;  ///< guards what follows; never held while waiting for the thread
    std::condition_variable m_joined;
    std::unique_ptr<KvTimerThread> m_thread;
    bool m_joining = false;  ///< someone waits for m_thread outside the lock
};
