#pragma once

#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>

#include "support/zone_guard.h"
#include "ui/widgets/text.h"

namespace orvelle::test {

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
