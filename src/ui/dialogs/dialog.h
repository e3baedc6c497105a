#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QPoint>

/// The base of the program's dialogs: without a frame of the window system, white with a thin
/// outline, dragged with the mouse by any free place. Enter presses the button that has the focus,
/// else the default one. Interface thread.
class KvDialog : public QDialog {
    Q_OBJECT

public:
    explicit KvDialog(QWidget* parent = nullptr);

    void setDraggable(bool draggable) { m_draggable = draggable; }

    /// Centres it over its parent, or over `over`, and runs it modally. `leftInset` as in
    /// orvelle::centreOver().
    int execCentred(int leftInset = 0);
    int execCentred(const QWidget* over, int leftInset = 0);

protected:
    /// done() for a dialog that may end by itself just after it came: waits for it to be the active
    /// window, half a second at most.
    void doneOnceActive(int result);

    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool m_draggable = true;
    bool m_dragging = false;
    QElapsedTimer m_sinceShown;
    QPoint m_location;  ///< of the grabbed point in the dialog
};
