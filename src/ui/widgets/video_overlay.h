#pragma once

#include <QObject>
#include <QTimer>
#include <QVector>

#include "ui/widgets/loading_view.h"
#include "ui/widgets/picture_notice.h"

namespace orvelle {

/// What lies over a moving picture, from below: a cover while something is awaited, a notice, and
/// the view's own parts, some of which are bars that come when the mouse moves over the view or
/// the keyboard goes through it, and leave after a while. Interface thread.
class VideoOverlay : public QObject {
    Q_OBJECT

public:
    /// `view` is what the mouse and the keyboard are watched of; `ground`, a child of it, carries
    /// the parts and owns this.
    VideoOverlay(QWidget* view, QWidget* ground);
    ~VideoOverlay() override;

    /// Borrowed children of the ground, from below; the bars among them are named as well.
    void setParts(const QVector<QWidget*>& parts, const QVector<QWidget*>& bars);
    /// One of the parts whose buttons stay in reach, as those of the bars, once the keyboard is at
    /// them.
    void keepBarsFor(QWidget* part) { m_keepers += part; }
    /// Without, the bars do not come.
    void setEnabled(bool enabled);

    bool areBarsShown() const { return m_areBarsShown; }
    /// Shows the bars for a while.
    void wake();
    /// Hides them, unless the mouse or the keyboard is at them.
    void rest();
    void setBarsShown(bool shown);

    /// A turning sign and a text on the darkened picture.
    void showCover(const QString& text);
    void hideCover();
    PictureNotice* notice() const { return m_notice; }
    /// Follows the ground's size.
    void layOut();

signals:
    void barsChanged(bool areShown);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool areBarsInUse() const;

    QWidget* const m_view;
    QWidget* const m_ground;
    PictureNotice* const m_notice;  ///< child of the ground
    QVector<QWidget*> m_parts;
    QVector<QWidget*> m_bars;
    QVector<QWidget*> m_keepers;
    bool m_isEnabled = false;
    bool m_areBarsShown = false;
    QTimer m_timer;
    KvLoadingView m_cover;  ///< a child of the ground only while it is shown
};

}  // namespace orvelle
