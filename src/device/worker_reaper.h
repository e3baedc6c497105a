#pragma once

#include <QTimer>

#include <memory>
#include <vector>

#include "core/thread.h"

namespace orvelle {

/// Takes workers that nobody waits for any more, asks them to stop until they have ended, and
/// deletes them. Interface thread.
class WorkerReaper {
public:
    WorkerReaper();
    ~WorkerReaper() { clear(); }
    WorkerReaper(const WorkerReaper&) = delete;
    WorkerReaper& operator=(const WorkerReaper&) = delete;

    /// Returns at once; null is harmless. `listener` hears nothing of the worker any more.
    void take(std::unique_ptr<KvThread> worker, const QObject* listener = nullptr);
    /// Waits for all.
    void clear();
    bool isEmpty() const { return m_workers.empty(); }

private:
    void reap();

    std::vector<std::unique_ptr<KvThread>> m_workers;
    QTimer m_timer;  ///< runs while there are workers
};

}  // namespace orvelle
