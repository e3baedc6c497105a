#pragma once

#include <QWidget>

/// The bar by which a frameless window is moved: by the desktop where it offers that, else by
/// itself. A double click asks to maximise. Interface thread.
class KvTitleView : public QWidget {
    Q_OBJECT

public:
    /// `window` is what moves; borrowed.
    KvTitleView(QWidget* window, QWidget* parent);

signals:
    /// A release, or the begin of a move that the desktop takes over.
    void mouseRelease();
    void doubleClick();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    bool startSystemMove();

    QWidget* const m_window;
    bool m_dragging = false;
    bool m_moved = false;  ///< by itself, since this press
    QPoint m_last;         ///< on the screen
};
