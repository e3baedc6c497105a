#pragma once

#include <QObject>

#include <cstdint>

namespace orvelle {
class VideoSurface;
}

namespace orvelle::bench {

/// Tells when new pictures of a view are on the screen. The view, whose window must not change,
/// outlives it. Interface thread.
class PaintWatch : public QObject {
    Q_OBJECT
public:
    explicit PaintWatch(VideoSurface& view);

    /// A picture that was replaced before the window was drawn is not among them.
    uint64_t painted() const { return m_painted; }

signals:
    /// The window was drawn with a new picture in it.
    void onScreen();

protected:
    bool eventFilter(QObject* window, QEvent* event) override;

private:
    bool m_isDue = false;
    uint64_t m_painted = 0;
};

}  // namespace orvelle::bench
