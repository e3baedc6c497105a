#include "render/picture_converter.h"

namespace orvelle {
namespace {

// Luma's black is 0 in the view, where the library would take away 16: in units of 1/256.
constexpr int kBlackOffset = 16 * 256;
constexpr int kUnchanged = 1 << 16;
// Box filter when shrinking, bilinear when enlarging.
constexpr int kFilter = SWS_AREA;
constexpr AVPixelFormat kTargetFormat = AV_PIX_FMT_0RGB32;

}  // namespace

bool PictureConverter::accepts(const AVFrame& picture) {
    const bool isPlanar420 =
        picture.format == AV_PIX_FMT_YUV420P || picture.format == AV_PIX_FMT_YUVJ420P;
    return isPlanar420 && picture.data[0] && picture.width > 1 && picture.height > 1;
}

QImage PictureConverter::Target::image() const {
    if (!m_frame)
        return {};
    return QImage(m_frame->data[0], m_size.width(), m_size.height(), m_frame->linesize[0],
                  QImage::Format_RGB32);
}

void PictureConverter::Target::clear() {
    m_frame.reset();
    m_size = {};
}

bool PictureConverter::Target::allocate(const QSize& size) {
    if (m_frame && m_size == size)
        return true;
    clear();
    FramePtr frame(av_frame_alloc());
    if (!frame)
        return false;
    frame->format = kTargetFormat;
    // The library's fast ways are for even widths.
    frame->width = size.width() + size.width() % 2;
    frame->height = size.height();
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return false;
    m_frame = std::move(frame);
    m_size = size;
    return true;
}

int PictureConverter::convert(const AVFrame& picture, const QRect& part, const QSize& size,
                              Target& target) {
    if (size.isEmpty() || part.isEmpty() || !target.allocate(size) ||
        !prepare(part.size(), target)) {
        target.clear();
        return -1;
    }
    const auto plane = [&picture](int index, int x, int y) {
        return picture.data[index] + ptrdiff_t{y} * picture.linesize[index] + x;
    };
    const uint8_t* const planes[] = {plane(0, part.x(), part.y()),
                                     plane(1, part.x() / 2, part.y() / 2),
                                     plane(2, part.x() / 2, part.y() / 2)};
    sws_scale(m_scaler.get(), planes, picture.linesize, 0, part.height(), target.m_frame->data,
              target.m_frame->linesize);
    return 0;
}

bool PictureConverter::prepare(const QSize& sourceSize, const Target& target) {
    const QSize targetSize(target.m_frame->width, target.m_frame->height);
    if (m_scaler && sourceSize == m_sourceSize && targetSize == m_targetSize)
        return true;
    m_sourceSize = sourceSize;
    m_targetSize = targetSize;
    m_scaler.reset(sws_getContext(sourceSize.width(), sourceSize.height(), AV_PIX_FMT_YUV420P,
                                  targetSize.width(), targetSize.height(), kTargetFormat, kFilter,
                                  nullptr, nullptr, nullptr));
    const int* matrix = sws_getCoefficients(SWS_CS_ITU601);
    return m_scaler && sws_setColorspaceDetails(m_scaler.get(), matrix, 0, matrix, 1, kBlackOffset,
                                                kUnchanged, kUnchanged) >= 0;
}

}  // namespace orvelle
