#include "render/repaint_tick.h"

#include <QCoreApplication>
#include <QEvent>

#include <chrono>

#include "core/tsan_annotations.h"

namespace orvelle {
namespace {

int64_t nowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

std::shared_ptr<RepaintTick> RepaintTick::shared() {
    static std::weak_ptr<RepaintTick> s_tick;
    std::shared_ptr<RepaintTick> tick = s_tick.lock();
    if (!tick) {
        tick = std::make_shared<RepaintTick>();
        s_tick = tick;
    }
    return tick;
}

RepaintTick::RepaintTick() {
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &RepaintTick::serveOrWait);
}

void RepaintTick::add(Client* client) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_plan.add(client);
}

void RepaintTick::remove(Client* client) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_plan.remove(client);
}

void RepaintTick::request(Client& client) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const int64_t now = nowMs();
        m_plan.note(client, now);
        const std::optional<int64_t> due = m_plan.dueMs(now);
        if (m_wakeMs && *m_wakeMs <= due)
            return;
        // The event itself may take its time, but a second one would not come sooner.
        m_wakeMs = now;
    }
    auto* const wakeUp = new QEvent(QEvent::UpdateRequest);
    tsanRelease(this);
    const TsanBlindSpot queue;
    QCoreApplication::postEvent(this, wakeUp);
}

void RepaintTick::forget(Client& client) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_plan.forget(client);
}

bool RepaintTick::event(QEvent* event) {
    tsanAcquire(this);
    if (event->type() != QEvent::UpdateRequest)
        return QObject::event(event);
    serveOrWait();
    return true;
}

void RepaintTick::serveOrWait() {
    std::vector<RepaintPlan::View*> dirty;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const int64_t now = nowMs();
        m_wakeMs = m_plan.dueMs(now);
        if (!m_wakeMs)
            return;
        if (*m_wakeMs > now) {
            m_timer.start(static_cast<int>(*m_wakeMs - now));
            return;
        }
        m_wakeMs.reset();
        dirty = m_plan.take(now);
    }
    m_timer.stop();
    for (RepaintPlan::View* view : dirty)
        static_cast<Client*>(view)->repaint();
}

}  // namespace orvelle
