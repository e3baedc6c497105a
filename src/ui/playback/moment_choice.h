#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

namespace orvelle {

/// Lets clicks pass only so often. Times are in milliseconds of a steady clock.
class ClickGuard {
public:
    static constexpr qint64 kIntervalMs = 1000;

    bool accepts(qint64 now);
    /// Until one would pass again, 0 for at once.
    qint64 remaining(qint64 now) const;

private:
    qint64 m_last = -1;  ///< the last accepted one
};

/// Clicks and choices within a second make one, as a camera needs its time to change files: of
/// clicks the first counts, of chosen moments the last. Interface thread.
class MomentChoice : public QObject {
    Q_OBJECT

public:
    /// `clock` gives milliseconds of a steady clock.
    explicit MomentChoice(std::function<qint64()> clock);

    /// Whether something may be played now; forgets a moment that waits.
    bool acceptClick();
    /// due() tells when this moment may be played.
    void postpone(int time);
    void forget() { m_timer.stop(); }
    bool isWaiting() const { return m_timer.isActive(); }

signals:
    void due(int time);

private:
    const std::function<qint64()> m_clock;
    ClickGuard m_guard;
    QTimer m_timer;
    int m_time = 0;
};

}  // namespace orvelle
