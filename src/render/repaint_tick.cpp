#include "render/repaint_tick.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>

#include "core/tsan_annotations.h"

namespace orvelle {
namespace {

// With several views a composition is shared; with one there is nothing to gather.
constexpr int kManyViewsIntervalMs = 33;
constexpr int kOneViewIntervalMs = 16;

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
    connect(&m_timer, &QTimer::timeout, this, &RepaintTick::serve);
}

void RepaintTick::add(Client* client) {
    m_clients.push_back(client);
}

void RepaintTick::remove(Client* client) {
    m_clients.erase(std::remove(m_clients.begin(), m_clients.end(), client), m_clients.end());
}

void RepaintTick::request(Client& client) {
    client.isDirty = true;
    if (m_isWakePending.exchange(true))
        return;
    auto* const wakeUp = new QEvent(QEvent::UpdateRequest);
    tsanRelease(this);
    const TsanBlindSpot queue;
    QCoreApplication::postEvent(this, wakeUp);
}

bool RepaintTick::event(QEvent* event) {
    tsanAcquire(this);
    if (event->type() != QEvent::UpdateRequest)
        return QObject::event(event);
    serveOrWait();
    return true;
}

void RepaintTick::serveOrWait() {
    const qint64 elapsedMs = m_sinceServed.isValid() ? m_sinceServed.elapsed() : intervalMs();
    const qint64 remainingMs = intervalMs() - elapsedMs;
    // The wake-up stays pending while the timer runs, so that requests until then cost no event.
    if (remainingMs > 0)
        m_timer.start(static_cast<int>(remainingMs));
    else
        serve();
}

void RepaintTick::serve() {
    m_isWakePending = false;
    m_sinceServed.start();
    for (Client* client : m_clients) {
        if (client->isDirty.exchange(false))
            client->repaint();
    }
}

int RepaintTick::intervalMs() const {
    const auto visible = std::count_if(m_clients.begin(), m_clients.end(),
                                       [](const Client* client) { return client->isVisible(); });
    return visible > 1 ? kManyViewsIntervalMs : kOneViewIntervalMs;
}

}  // namespace orvelle
