#pragma once

#include <QDateTime>
#include <QImage>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "render/picture_zoom.h"
#include "render/repaint_tick.h"

class QWidget;
struct AVFrame;

namespace orvelle {

/// Where a player shows its pictures: keeps the latest one and draws it on a widget with its
/// proportions kept on black. Pictures come from any one thread; a newer one replaces one that was
/// never painted. While the widget cannot be seen nothing is drawn, and the latest picture is there
/// again as soon as it can.
///
/// Interface thread, but for what says otherwise.
class VideoSurface {
public:
    virtual ~VideoSurface();
    VideoSurface(const VideoSurface&) = delete;
    VideoSurface& operator=(const VideoSurface&) = delete;

    /// The widget that this is.
    QWidget& widget() const { return m_widget; }

    /// Shows a decoded picture, planar 4:2:0 in limited range: 0, or -1 when it makes no sense or
    /// memory lacks. Any thread.
    virtual int showPicture(const AVFrame& picture) = 0;
    /// Shows black. Any thread.
    virtual void showNothing() = 0;

    /// Writes the current picture at its own size as a JPEG file, which notes `takenAt` where that
    /// is valid; false when there is none or
    /// writing fails. Blocks for the encoding, but holds up neither painting nor new pictures. Any
    /// thread.
    virtual bool snapshot(const QString& path, const QDateTime& takenAt = {}) = 0;
    /// The share of the widget that the last painted picture covers; null pointers are skipped.
    /// Any thread.
    virtual void pictureScale(double* x, double* y) const = 0;
    /// How the current picture fits the widget without any zoom; (1.0, 1.0) without one.
    virtual PictureScale fit() const = 0;
    /// What the widget shows, in pixels of the screen.
    virtual QImage grabView() = 0;

    /// Magnifies this picture and those that follow.
    void setZoom(const PictureZoom& zoom);
    /// Any thread.
    PictureZoom zoom() const;

    /// Whether the widget can be seen: it is shown, and its window is not minimised. Any thread.
    bool isSeen() const { return m_isSeen; }
    /// Called before each repaint for a new picture, for what has to change together with it.
    void addRepaintHook(std::function<void()> hook) { m_hooks.push_back(std::move(hook)); }

protected:
    /// `widget` is the object itself.
    explicit VideoSurface(QWidget& widget);

    /// Repaints soon, perhaps together with other views. Any thread.
    void requestRepaint();
    virtual void repaintPicture() = 0;

private:
    class SeenWatch;

    void setSeen(bool isSeen);

    QWidget& m_widget;
    std::vector<std::function<void()>> m_hooks;
    const std::shared_ptr<RepaintTick> m_tick;
    RepaintTick::Client m_tickClient;
    std::atomic<bool> m_isSeen{false};  ///< orders nothing
    std::unique_ptr<SeenWatch> m_seenWatch;

    mutable std::mutex m_zoomMutex;  ///< guards the one below
    PictureZoom m_zoom;
};

/// A surface of the kind that suits this machine, see drawing(); a child of `parent`, which owns
/// it.
VideoSurface* makeVideoSurface(QWidget* parent);

}  // namespace orvelle
