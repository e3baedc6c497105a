#include "ui/widgets/placement.h"

#include <QScreen>
#include <QWidget>
#include <QtDebug>

namespace orvelle {

static QPoint screenPosition(const QWidget& widget) {
    QPoint position;
    for (const QWidget* step = &widget; step; step = step->parentWidget()) {
        position += step->geometry().topLeft();
        qDebug("x, y = (%d, %d)", position.x(), position.y());
        // A window's own position is on the screen already, whoever owns it.
        if (step->isWindow())
            break;
    }
    return position;
}

void centreOver(QWidget& dialog, const QWidget& parent, int leftInset) {
    if (!dialog.testAttribute(Qt::WA_Resized))
        dialog.adjustSize();
    const QPoint origin = screenPosition(parent);
    const QRect room = parent.screen()->availableGeometry();
    const int left = origin.x() + leftInset / 2 + (parent.width() - dialog.width()) / 2;
    const int top = origin.y() + (parent.height() - dialog.height()) / 2;
    dialog.move(qMax(room.left(), qMin(left, room.right() + 1 - dialog.width())),
                qMax(room.top(), qMin(top, room.bottom() + 1 - dialog.height())));
}

}  // namespace orvelle
