#include "render/raster_video_view.h"

#include <QPainter>

#include <cmath>

#include "render/jpeg_writer.h"

namespace orvelle {
namespace {

/// The pixels whose middle lies in the covered share of a side, as OpenGL fills them.
std::pair<int, int> coveredPixels(int side, double share) {
    const int first = static_cast<int>(std::ceil(side * (1.0 - share) / 2.0 - 0.5));
    const int end = static_cast<int>(std::ceil(side * (1.0 + share) / 2.0 - 0.5));
    return {first, std::max(1, end - first)};
}

QRect coveredArea(const QSize& view, const PictureScale& scale) {
    const auto [left, width] = coveredPixels(view.width(), scale.x);
    // OpenGL counts rows from below, which decides where a middle lies on the edge.
    const auto [bottom, height] = coveredPixels(view.height(), scale.y);
    return {left, view.height() - bottom - height, width, height};
}

/// Lines that begin here begin at an address that the converter is quick with.
constexpr int kColumnStep = 32;

/// The pixels of a picture, whose even size it is, that are seen through the view.
QRect seenPart(const QSize& picture, const QRectF& place) {
    const QRectF seen = place.intersected(QRectF(0.0, 0.0, 1.0, 1.0));
    const auto toPicture = [](double share, double start, double length, int side) {
        return (share - start) / length * side;
    };
    const double left = toPicture(seen.left(), place.left(), place.width(), picture.width());
    const double right = toPicture(seen.right(), place.left(), place.width(), picture.width());
    const double top = toPicture(seen.top(), place.top(), place.height(), picture.height());
    const double bottom = toPicture(seen.bottom(), place.top(), place.height(), picture.height());
    const QPoint first(int(left) / kColumnStep * kColumnStep, int(top) & ~1);
    const QPoint end(std::min((int(std::ceil(right)) + 1) & ~1, picture.width()),
                     std::min((int(std::ceil(bottom)) + 1) & ~1, picture.height()));
    return {first, QSize(end.x() - first.x(), end.y() - first.y())};
}

/// Where those pixels go in the view.
QRect placeOf(const QRect& part, const QSize& picture, const QRectF& place, const QSize& view) {
    const auto x = [&](int column) {
        return qRound((place.left() + place.width() * column / picture.width()) * view.width());
    };
    const auto y = [&](int row) {
        return qRound((place.top() + place.height() * row / picture.height()) * view.height());
    };
    const QPoint first(x(part.left()), y(part.top()));
    return {first, QSize(x(part.left() + part.width()) - first.x(),
                         y(part.top() + part.height()) - first.y())};
}

PictureScale scaleIn(const QSize& view, const AVFrame& picture) {
    return fitPicture(picture.width, picture.height, view.width(), view.height());
}

}  // namespace

RasterVideoView::RasterVideoView(QWidget* parent)
    : QWidget(parent), VideoSurface(static_cast<QWidget&>(*this)), m_picture(av_frame_alloc()) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    followSize();
}

RasterVideoView::~RasterVideoView() = default;

int RasterVideoView::showPicture(const AVFrame& picture) {
    if (!PictureConverter::accepts(picture))
        return -1;
    QSize view;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        view = m_viewSize;
    }
    // The place is that of the size seen here: once it has changed, painting converts anew.
    const Cut cut = cutOf(picture, view);
    const bool isConverted =
        isSeen() && m_converter.convert(picture, cut.source, cut.target.size(), m_spare) == 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        av_frame_unref(m_picture.get());
        if (av_frame_ref(m_picture.get(), &picture) < 0)
            return -1;
        m_isShownCurrent = isConverted;
        m_shownSource = cut.source;
        if (isConverted)
            std::swap(m_shown, m_spare);
    }
    requestRepaint();
    return 0;
}

void RasterVideoView::showNothing() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        av_frame_unref(m_picture.get());
        m_shown.clear();
        m_isShownCurrent = false;
    }
    requestRepaint();
}

bool RasterVideoView::snapshot(const QString& path, const QDateTime& takenAt) {
    FramePtr picture;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_picture->data[0])
            picture.reset(av_frame_clone(m_picture.get()));
    }
    if (!picture)
        return false;
    // As the other view's pictures: without a last column or row that has no colour of its own.
    picture->width &= ~1;
    picture->height &= ~1;
    picture->color_range = AVCOL_RANGE_MPEG;
    return writeFrameJpeg(picture.get(), path, takenAt) == 0;
}

void RasterVideoView::pictureScale(double* x, double* y) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (x)
        *x = m_scale.x;
    if (y)
        *y = m_scale.y;
}

PictureScale RasterVideoView::fit() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_picture->data[0] ? scaleIn(m_viewSize, *m_picture) : PictureScale{};
}

QImage RasterVideoView::grabView() {
    followSize();
    const std::lock_guard<std::mutex> lock(m_mutex);
    QImage view(m_viewSize, QImage::Format_RGB32);
    view.fill(Qt::black);
    const QRect place = prepareShown();
    if (!place.isEmpty())
        QPainter(&view).drawImage(place.topLeft(), m_shown.image());
    view.setDevicePixelRatio(devicePixelRatioF());
    return view;
}

void RasterVideoView::followSize() {
    const QSize size = (QSizeF(QWidget::size()) * devicePixelRatioF()).toSize();
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_viewSize = size;
}

void RasterVideoView::resizeEvent(QResizeEvent*) {
    followSize();
}

void RasterVideoView::repaintPicture() {
    update();
}

RasterVideoView::Cut RasterVideoView::cutOf(const AVFrame& picture, const QSize& view) const {
    const PictureZoom zoom = this->zoom();
    const PictureScale fit = scaleIn(view, picture);
    if (!zoom.isActive())
        return {QRect(0, 0, picture.width, picture.height), coveredArea(view, fit)};
    const QSize size(picture.width & ~1, picture.height & ~1);
    const QRectF place = zoom.place(fit);
    const QRect source = seenPart(size, place);
    return {source, placeOf(source, size, place, view)};
}

QRect RasterVideoView::prepareShown() {
    m_scale = {};
    if (!m_picture->data[0] || m_viewSize.isEmpty())
        return {};
    const QRectF place = zoom().place(scaleIn(m_viewSize, *m_picture));
    m_scale = {std::min(1.0, place.width()), std::min(1.0, place.height())};
    const Cut cut = cutOf(*m_picture, m_viewSize);
    if (!m_isShownCurrent || m_shown.size() != cut.target.size() || m_shownSource != cut.source) {
        m_shownSource = cut.source;
        m_isShownCurrent =
            m_paintConverter.convert(*m_picture, cut.source, cut.target.size(), m_shown) == 0;
    }
    return m_isShownCurrent ? cut.target : QRect();
}

void RasterVideoView::paintEvent(QPaintEvent*) {
    // The screen may have become another one of a different density.
    followSize();
    QPainter painter(this);
    const qreal ratio = devicePixelRatioF();
    // Between whole pixels the view may reach a part of one further than its size says.
    if (ratio != std::floor(ratio))
        painter.fillRect(rect(), Qt::black);
    painter.scale(1.0 / ratio, 1.0 / ratio);
    const std::lock_guard<std::mutex> lock(m_mutex);
    const QRect place = prepareShown();
    const QRegion view(QRect(QPoint(), m_viewSize));
    for (const QRect& band : view.subtracted(place))
        painter.fillRect(band, Qt::black);
    if (!place.isEmpty())
        painter.drawImage(place.topLeft(), m_shown.image());
}

}  // namespace orvelle
