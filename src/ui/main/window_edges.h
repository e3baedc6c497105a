#pragma once

#include <QObject>
#include <QRect>

class QMouseEvent;
class QWidget;

namespace orvelle {

/// Lets the user resize a frameless window by its edges and corners: by the desktop where it
/// offers that, else by itself. Lengths are device-independent pixels, so it works at any scaling.
/// A child of the window; interface thread.
class WindowEdges : public QObject {
    Q_OBJECT

public:
    /// Creates the window's native handle.
    explicit WindowEdges(QWidget* window);
    ~WindowEdges() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Qt::Edges edgesAt(const QPoint& position) const;
    void showCursor(Qt::Edges edges);
    bool press(const QMouseEvent& event);
    bool move(const QMouseEvent& event);
    QRect dragged(const QPoint& step) const;

    QWidget* const m_window;
    bool m_hasCursor = false;  ///< an override cursor of ours is set
    Qt::Edges m_edges;         ///< dragged by ourselves
    QPoint m_pressed;          ///< on the screen
    QRect m_before;
};

}  // namespace orvelle
