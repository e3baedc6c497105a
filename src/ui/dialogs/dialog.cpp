#include "ui/dialogs/dialog.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QtDebug>

#include "ui/widgets/placement.h"
#include "ui/widgets/widget_utils.h"

KvDialog::KvDialog(QWidget* parent) : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint) {
    setStyleSheet(QStringLiteral("QDialog{background-color:white; border: 1px solid #CCCCCC;}"));
}

int KvDialog::execCentred(int leftInset) {
    return execCentred(parentWidget(), leftInset);
}

int KvDialog::execCentred(const QWidget* over, int leftInset) {
    if (over)
        orvelle::centreOver(*this, *over, leftInset);
    return exec();
}

void KvDialog::keyPressEvent(QKeyEvent* event) {
    if (!KvWidgetUtils::clickByEnter(*this, *event))
        QDialog::keyPressEvent(event);
}

void KvDialog::mousePressEvent(QMouseEvent* event) {
    if (!m_draggable || event->button() != Qt::LeftButton)
        return;
    m_dragging = true;
    m_location = event->globalPos() - frameGeometry().topLeft();
    qDebug("_location = (%d, %d)", m_location.x(), m_location.y());
}

void KvDialog::mouseMoveEvent(QMouseEvent* event) {
    if (m_dragging && (event->buttons() & Qt::LeftButton))
        move(event->globalPos() - m_location);
}

void KvDialog::mouseReleaseEvent(QMouseEvent*) {
    m_dragging = false;
}
