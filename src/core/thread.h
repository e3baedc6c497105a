#pragma once

#include <QString>
#include <QThread>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

/// Base of every worker thread: a named QThread with a cooperative stop flag.
///
/// The owner starts it, calls stop() and waitForEnd(), and then deletes it; the worker's
/// run() polls isStopped() and returns promptly once it is set. Nothing interrupts a blocked
/// call, so whoever may block on something else is woken by that something.
class KvThread : public QThread {
public:
    /// `name` is shown by debuggers and `top -H`; Linux cuts it at 15 bytes.
    explicit KvThread(const QString& name, QObject* parent = nullptr);
    /// The thread must have ended: the owner stops and waits first.
    ~KvThread() override;

    /// The worker's loop; the base does nothing.
    void run() override {}

    /// Whether stop() was called. Any thread.
    virtual bool isStopped() const;
    /// Sets the stop flag and ends a running sleepUnlessStopped(). Any thread.
    virtual void stop();

    /// Blocks the caller until the thread is not running.
    void waitForEnd();
    /// The same, giving up after `timeoutMs` (0 and negative: without bound); true when it ended.
    bool waitForEnd(int timeoutMs);

    /// Waits up to `ms` on the worker's own thread; returns true at once when asked to stop.
    bool sleepUnlessStopped(int ms);

    /// Null counts as not running and as stopped.
    static bool isThreadRunning(const KvThread* thread);
    static bool isThreadStopped(const KvThread* thread);

    /// Stops, waits for and deletes the thread; harmless on an empty pointer.
    template <class Thread>
    static void stopAndDelete(std::unique_ptr<Thread>& thread) {
        if (!thread)
            return;
        thread->stop();
        thread->waitForEnd();
        thread.reset();
    }

private:
    std::atomic<bool> m_stopped{false};  ///< orders nothing by itself; set under m_mutex
    std::mutex m_mutex;                  ///< pairs m_stopped with m_stopSignal
    std::condition_variable m_stopSignal;
};
