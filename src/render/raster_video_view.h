#pragma once

#include <QWidget>

#include <mutex>

#include "frames/ffmpeg_ptr.h"
#include "render/picture_converter.h"
#include "render/picture_geometry.h"
#include "render/video_surface.h"

namespace orvelle {

/// A video surface without OpenGL, with the same results as KvVideoView.
///
/// The thread that brings a picture converts it straight to the size that it has on the screen;
/// the interface thread copies it into the window, and converts only what came while the widget
/// could not be seen or had another size.
class RasterVideoView : public QWidget, public VideoSurface {
    Q_OBJECT
public:
    explicit RasterVideoView(QWidget* parent = nullptr);
    ~RasterVideoView() override;

    int showPicture(const AVFrame& picture) override;
    void showNothing() override;
    bool snapshot(const QString& path, const QDateTime& takenAt = {}) override;
    void pictureScale(double* x, double* y) const override;
    PictureScale fit() const override;
    QImage grabView() override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void repaintPicture() override;

private:
    /// What of a picture is converted, and where it goes, in pixels.
    struct Cut {
        QRect source;
        QRect target;  ///< reaches out of the view by what the source was rounded up
    };

    void followSize();
    Cut cutOf(const AVFrame& picture, const QSize& view) const;
    /// Makes m_shown what the view needs now, under the lock; its place in the view, or nothing.
    QRect prepareShown();

    // The thread that brings pictures.
    PictureConverter m_converter;
    PictureConverter::Target m_spare;

    // Interface thread.
    PictureConverter m_paintConverter;  ///< used when the other had no reason to

    mutable std::mutex m_mutex;  ///< guards what follows; held while pixels are painted
    FramePtr m_picture;          ///< the latest; never without a frame, perhaps of no picture
    PictureConverter::Target m_shown;
    bool m_isShownCurrent = false;  ///< m_shown is of m_picture
    QRect m_shownSource;            ///< the part of it
    QSize m_viewSize;               ///< in pixels of the screen
    PictureScale m_scale;
};

}  // namespace orvelle
