#pragma once

#include <QFocusFrame>
#include <QObject>
#include <QPointer>

namespace orvelle {

/// Draws a ring round the widget that the keyboard has reached with Tab or a shortcut; a click
/// hides it again. One object watches all windows of the program. Interface thread.
class FocusRing : public QObject {
    Q_OBJECT

public:
    /// Installs one on the application object, which owns it.
    static void install();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit FocusRing(QObject* application);

    void showAround(QWidget* widget);
    void hide();

    /// What a click hides hands its focus on as if Tab had been pressed.
    bool m_isMouseInUse = false;
    QPointer<QFocusFrame> m_frame;  ///< a sibling of the widget, so it may go with a window
};

}  // namespace orvelle
