#include "device/worker_reaper.h"

#include <algorithm>

namespace orvelle {

static constexpr int kStopRepeatMs = 20;

WorkerReaper::WorkerReaper() {
    m_timer.setInterval(kStopRepeatMs);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { reap(); });
}

void WorkerReaper::take(std::unique_ptr<KvThread> worker, const QObject* listener) {
    if (!worker)
        return;
    if (listener)
        QObject::disconnect(worker.get(), nullptr, listener, nullptr);
    worker->stop();
    m_workers.push_back(std::move(worker));
    m_timer.start();
}

void WorkerReaper::reap() {
    // A stop that comes just before the worker blocks is lost, hence the repetition.
    for (const auto& worker : m_workers)
        worker->stop();
    const auto ended = std::partition(m_workers.begin(), m_workers.end(),
                                      [](const auto& worker) { return worker->isRunning(); });
    for (auto worker = ended; worker != m_workers.end(); ++worker)
        (*worker)->waitForEnd();
    m_workers.erase(ended, m_workers.end());
    if (m_workers.empty())
        m_timer.stop();
}

void WorkerReaper::clear() {
    for (const auto& worker : m_workers) {
        do
            worker->stop();
        while (!worker->waitForEnd(kStopRepeatMs));
    }
    m_workers.clear();
    m_timer.stop();
}

}  // namespace orvelle
