#pragma once

#include <QObject>
#include <QPoint>

class QWidget;

namespace orvelle {

class VideoSurface;

/// Magnifies the picture of a video view by hand: the wheel zooms at the mouse, and a picture that
/// is larger than its view is moved by dragging it. Interface thread.
class ZoomControl : public QObject {
    Q_OBJECT

public:
    /// `area` is the widget that the mouse is on, perhaps an ancestor of the view's; it owns this.
    explicit ZoomControl(QWidget* area);

    /// Borrowed.
    void setSurface(VideoSurface* surface) { m_surface = surface; }
    /// Without a picture there is nothing to look at; what was magnified is not any more.
    void setEnabled(bool enabled);

    double factor() const;
    bool isActive() const { return factor() > 1.0; }
    /// At the middle, `steps` of the wheel.
    void zoomBy(double steps);
    void reset();

signals:
    void changed(double factor);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool zoomByWheel(const QPointF& at, double steps);
    bool moveBy(const QPoint& delta);
    void showHand();

    QWidget* const m_area;
    VideoSurface* m_surface = nullptr;
    bool m_isEnabled = false;
    bool m_isMoving = false;
    QPoint m_grabbed;  ///< where the mouse was last while it moves the picture
};

}  // namespace orvelle
