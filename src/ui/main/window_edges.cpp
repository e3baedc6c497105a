#include "ui/main/window_edges.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

namespace orvelle {

namespace {

constexpr int kEdge = 5;
constexpr int kCorner = 14;

Qt::CursorShape cursorOf(Qt::Edges edges) {
    const bool left = edges & Qt::LeftEdge;
    const bool right = edges & Qt::RightEdge;
    const bool top = edges & Qt::TopEdge;
    const bool bottom = edges & Qt::BottomEdge;
    if ((left && top) || (right && bottom))
        return Qt::SizeFDiagCursor;
    if ((right && top) || (left && bottom))
        return Qt::SizeBDiagCursor;
    return left || right ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

}  // namespace

WindowEdges::WindowEdges(QWidget* window) : QObject(window), m_window(window) {
    window->winId();
    window->windowHandle()->installEventFilter(this);
}

WindowEdges::~WindowEdges() {
    showCursor({});
}

Qt::Edges WindowEdges::edgesAt(const QPoint& position) const {
    const QRect area = m_window->rect();
    if ((m_window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) ||
        !area.contains(position))
        return {};
    const int left = position.x();
    const int right = area.right() - left;
    const int top = position.y();
    const int bottom = area.bottom() - top;
    if (qMin(qMin(left, right), qMin(top, bottom)) >= kEdge)
        return {};
    // Near a corner the other edge comes along from further away.
    Qt::Edges edges;
    edges.setFlag(Qt::LeftEdge, left < kCorner);
    edges.setFlag(Qt::RightEdge, right < kCorner);
    edges.setFlag(Qt::TopEdge, top < kCorner);
    edges.setFlag(Qt::BottomEdge, bottom < kCorner);
    return edges;
}

// An override, since the widget under the edge has a cursor of its own.
void WindowEdges::showCursor(Qt::Edges edges) {
    if (!edges) {
        if (m_hasCursor)
            QApplication::restoreOverrideCursor();
    } else if (m_hasCursor) {
        QApplication::changeOverrideCursor(cursorOf(edges));
    } else {
        QApplication::setOverrideCursor(cursorOf(edges));
    }
    m_hasCursor = bool(edges);
}

bool WindowEdges::eventFilter(QObject*, QEvent* event) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
            return press(*static_cast<QMouseEvent*>(event));
        case QEvent::MouseMove:
            return move(*static_cast<QMouseEvent*>(event));
        case QEvent::MouseButtonRelease:
            return std::exchange(m_edges, {}) != Qt::Edges();
        case QEvent::Leave:
            showCursor({});
            return false;
        default:
            return false;
    }
}

bool WindowEdges::press(const QMouseEvent& event) {
    const Qt::Edges edges = edgesAt(event.pos());
    if (!edges || event.button() != Qt::LeftButton || QApplication::activePopupWidget())
        return false;
    if (m_window->windowHandle()->startSystemResize(edges))
        return true;
    m_edges = edges;
    m_pressed = event.globalPos();
    m_before = m_window->geometry();
    return true;
}

bool WindowEdges::move(const QMouseEvent& event) {
    if (m_edges) {
        m_window->setGeometry(dragged(event.globalPos() - m_pressed));
        return true;
    }
    if (event.buttons() == Qt::NoButton)
        showCursor(edgesAt(event.pos()));
    return false;
}

QRect WindowEdges::dragged(const QPoint& step) const {
    const QSize least = m_window->minimumSize();
    QRect area = m_before;
    if (m_edges & Qt::LeftEdge)
        area.setLeft(qMin(area.left() + step.x(), area.right() + 1 - least.width()));
    if (m_edges & Qt::RightEdge)
        area.setWidth(qMax(area.width() + step.x(), least.width()));
    if (m_edges & Qt::TopEdge)
        area.setTop(qMin(area.top() + step.y(), area.bottom() + 1 - least.height()));
    if (m_edges & Qt::BottomEdge)
        area.setHeight(qMax(area.height() + step.y(), least.height()));
    return area;
}

}  // namespace orvelle
