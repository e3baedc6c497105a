#pragma once

#include <QFocusFrame>

namespace orvelle {

/// Draws a ring round the widget that the keyboard has chosen with Tab or a shortcut; a click
/// hides it again. One object in a program watches all windows. Interface thread.
class FocusRing : public QFocusFrame {
    Q_OBJECT

public:
    /// Installs itself on the application object; ends with it.
    static void install();

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    FocusRing();
};

}  // namespace orvelle
