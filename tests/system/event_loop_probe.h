#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace orvelle::test {

/// How long the interface thread's event loop stands still at worst, as a timer of 5 ms sees it.
/// Interface thread.
class EventLoopProbe : public QObject {
    Q_OBJECT
public:
    EventLoopProbe();

    /// Beyond the timer's own 5 ms, since the probe was made.
    double worstDelayMs() const;

private:
    double delayMs() const;

    QTimer m_timer;
    QElapsedTimer m_sinceTick;
    double m_worstMs = 0.0;
};

}  // namespace orvelle::test
