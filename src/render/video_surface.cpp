#include "render/video_surface.h"

#include <QEvent>
#include <QPointer>
#include <QWidget>

#include "render/drawing.h"
#include "render/raster_video_view.h"
#include "render/video_view.h"

namespace orvelle {

/// Follows whether the widget is shown, in whichever window it is.
class VideoSurface::SeenWatch : public QObject {
public:
    SeenWatch(QWidget& widget, VideoSurface& surface) : m_widget(widget), m_surface(surface) {
        widget.installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override {
        switch (event->type()) {
            case QEvent::Show:
                follow(m_widget.window());
                m_surface.setSeen(isSeen());
                break;
            case QEvent::Hide:
                m_surface.setSeen(false);
                break;
            case QEvent::WindowStateChange:
                m_surface.setSeen(isSeen());
                break;
            default:
                break;
        }
        return false;
    }

private:
    bool isSeen() const { return m_widget.isVisible() && !m_widget.window()->isMinimized(); }

    void follow(QWidget* window) {
        if (window == m_window)
            return;
        if (m_window && m_window != &m_widget)
            m_window->removeEventFilter(this);
        m_window = window;
        if (m_window != &m_widget)
            m_window->installEventFilter(this);
    }

    QWidget& m_widget;
    VideoSurface& m_surface;
    QPointer<QWidget> m_window;
};

VideoSurface::VideoSurface(QWidget& widget)
    : m_widget(widget),
      m_tick(RepaintTick::shared()),
      m_seenWatch(std::make_unique<SeenWatch>(widget, *this)) {
    m_tickClient.repaint = [this] {
        for (const auto& hook : m_hooks)
            hook();
        repaintPicture();
    };
    m_tick->add(&m_tickClient);
}

VideoSurface::~VideoSurface() {
    m_tick->remove(&m_tickClient);
}

void VideoSurface::requestRepaint() {
    if (m_isSeen)
        m_tick->request(m_tickClient);
}

void VideoSurface::setSeen(bool isSeen) {
    if (m_isSeen.exchange(isSeen) == isSeen)
        return;
    // What came meanwhile was not drawn.
    if (isSeen)
        repaintPicture();
    else
        m_tick->forget(m_tickClient);
}

void VideoSurface::setZoom(const PictureZoom& zoom) {
    {
        const std::lock_guard<std::mutex> lock(m_zoomMutex);
        if (m_zoom == zoom)
            return;
        m_zoom = zoom;
    }
    repaintPicture();
}

PictureZoom VideoSurface::zoom() const {
    const std::lock_guard<std::mutex> lock(m_zoomMutex);
    return m_zoom;
}

VideoSurface* makeVideoSurface(QWidget* parent) {
    if (drawing() == Drawing::kOpenGl)
        return new KvVideoView(parent);
    return new RasterVideoView(parent);
}

}  // namespace orvelle
