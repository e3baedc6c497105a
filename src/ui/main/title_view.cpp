#include "ui/main/title_view.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

namespace {

constexpr QColor kColor(0, 167, 249);

}  // namespace

KvTitleView::KvTitleView(QWidget* window, QWidget* parent) : QWidget(parent), m_window(window) {}

void KvTitleView::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), kColor);
}

void KvTitleView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    m_dragging = true;
    m_moved = false;
    m_last = event->globalPos();
}

bool KvTitleView::startSystemMove() {
    QWindow* window = m_window->windowHandle();
    return window && window->startSystemMove();
}

void KvTitleView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint step = event->globalPos() - m_last;
    // A click may tremble; only from here on the desktop swallows the release.
    if (!m_dragging || (!m_moved && step.manhattanLength() < QApplication::startDragDistance()))
        return;
    if (!m_moved && startSystemMove()) {
        m_dragging = false;
        emit mouseRelease();
        return;
    }
    m_moved = true;
    m_last = event->globalPos();
    m_window->move(m_window->pos() + step);
}

void KvTitleView::mouseReleaseEvent(QMouseEvent*) {
    m_dragging = false;
    emit mouseRelease();
}

void KvTitleView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        emit doubleClick();
}
