#pragma once

#include <QFocusFrame>
#include <QObject>
#include <QPointer>

namespace orvelle {

/// Draws a ring round the widget that has the focus, however it came by it, for as long as the
/// keyboard is in use; a click hides it again. One object watches all windows of the program.
/// Interface thread.
class FocusRing : public QObject {
    Q_OBJECT

public:
    /// Installs one on the application object, which owns it.
    static void install();
    /// A key was the last that was pressed, not a button of the mouse.
    static bool isKeyboardInUse();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit FocusRing(QObject* application);

    void showAround(QWidget* widget);
    void hide();

    bool m_isKeyboardInUse = false;
    QPointer<QFocusFrame> m_frame;  ///< a sibling of the widget, so it may go with a window
};

}  // namespace orvelle
