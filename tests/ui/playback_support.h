#pragma once

#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>

#include <ctime>

#include "ui/widgets/text.h"

namespace orvelle::test {

/// The computer stands in this zone for as long as it lives.
class ZoneGuard {
public:
    explicit ZoneGuard(const QByteArray& zone) : m_before(qgetenv("TZ")) { set(zone); }
    ~ZoneGuard() { set(m_before); }
    Q_DISABLE_COPY(ZoneGuard)

private:
    static void set(const QByteArray& zone) {
        zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone);
        tzset();
    }

    const QByteArray m_before;
};

inline void sendMouse(QWidget* widget, QEvent::Type type, int x, int y = 10) {
    QMouseEvent event(type, QPointF(x, y), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &event);
}

/// The first argument of each signal.
template <class Value>
QList<Value> firstOf(const QSignalSpy& spy) {
    QList<Value> all;
    for (const QVariantList& arguments : spy)
        all += arguments.value(0).value<Value>();
    return all;
}

inline QPushButton* button(const QWidget& parent, const char* key) {
    for (auto* each : parent.findChildren<QPushButton*>())
        if (each->accessibleName() == text(key))
            return each;
    return nullptr;
}

}  // namespace orvelle::test
