#pragma once

#include <QObject>
#include <QTimer>

class KvSDCardPlaybackViewUI;
class QWidget;

namespace orvelle {

/// Lets the bars that lie on the picture in full screen leave after a while, and come back when
/// the mouse moves over the view or the keyboard goes through it. Bars that stand beside the
/// picture stay. Interface thread.
class FullScreenBars : public QObject {
    Q_OBJECT

public:
    /// Both are borrowed; `view` is the widget whose bars these are.
    FullScreenBars(QWidget* view, KvSDCardPlaybackViewUI* ui);

    /// Lays the bars on the picture, or beside it.
    void setFullscreen(bool fullscreen);
    /// Shows them, for a while.
    void wake();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void hide();

    QWidget* const m_view;
    KvSDCardPlaybackViewUI* const m_ui;
    QTimer m_timer;
};

}  // namespace orvelle
