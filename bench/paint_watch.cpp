#include "paint_watch.h"

#include <QEvent>
#include <QWidget>

#include "render/video_surface.h"

namespace orvelle::bench {

PaintWatch::PaintWatch(VideoSurface& view) {
    view.addRepaintHook([this] { m_isDue = true; });
    view.widget().window()->installEventFilter(this);
}

bool PaintWatch::eventFilter(QObject*, QEvent* event) {
    // With it the window is drawn, all that is due at once.
    if (event->type() != QEvent::UpdateRequest || !m_isDue)
        return false;
    m_isDue = false;
    ++m_painted;
    QMetaObject::invokeMethod(this, &PaintWatch::onScreen, Qt::QueuedConnection);
    return false;
}

}  // namespace orvelle::bench
