#include "ui/dialogs/dialog.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QTimer>
#include <QtDebug>

#include "ui/widgets/placement.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kActivationMs = 500;  // at most; a program behind others gets none
constexpr int kActivationPollMs = 10;

}  // namespace

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

/// A window that goes before the window manager is done with its coming may leave the keyboard
/// with none at all.
void KvDialog::doneOnceActive(int result) {
    if (!isVisible() || isActiveWindow() || m_sinceShown.elapsed() >= kActivationMs) {
        QDialog::done(result);
        return;
    }
    QTimer::singleShot(kActivationPollMs, this, [this, result] {
        if (isVisible())
            doneOnceActive(result);
    });
}

void KvDialog::showEvent(QShowEvent* event) {
    m_sinceShown.start();
    QDialog::showEvent(event);
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
