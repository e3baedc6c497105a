#include "media/player/video_frame_filter.h"

#include "media/media_log.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace orvelle {

namespace {

constexpr int kShortestSide = 2;

bool isFullRange(const AVFrame& frame) {
    return frame.color_range == AVCOL_RANGE_JPEG || frame.format == AV_PIX_FMT_YUVJ420P;
}

bool isSizeSensible(const AVFrame& frame) {
    const auto fits = [](int side) {
        return side >= kShortestSide && side <= VideoFrameFilter::kLongestSide;
    };
    return fits(frame.width) && fits(frame.height);
}

bool hasPlanes420(const AVFrame& frame) {
    const int chromaWidth = (frame.width + 1) / 2;
    return frame.data[0] && frame.data[1] && frame.data[2] && frame.linesize[0] >= frame.width &&
           frame.linesize[1] >= chromaWidth && frame.linesize[2] >= chromaWidth;
}

bool canBeConverted(const AVFrame& frame) {
    return frame.data[0] && sws_isSupportedInput(static_cast<AVPixelFormat>(frame.format));
}

}  // namespace

const AVFrame* VideoFrameFilter::accept(const AVFrame& frame) {
    const Layout layout = {frame.width, frame.height, frame.format, isFullRange(frame)};
    if (!isSizeSensible(frame))
        return refuse(layout);
    if (frame.format == AV_PIX_FMT_YUV420P && !layout.fullRange && hasPlanes420(frame))
        return &frame;
    return canBeConverted(frame) ? convert(frame, layout) : refuse(layout);
}

const AVFrame* VideoFrameFilter::convert(const AVFrame& frame, const Layout& layout) {
    // A new buffer each time: the last picture may still wait to be shown.
    m_converted.reset(av_frame_alloc());
    if (!m_converted || !prepareScaler(layout))
        return refuse(layout);
    m_converted->format = AV_PIX_FMT_YUV420P;
    m_converted->width = layout.width;
    m_converted->height = layout.height;
    if (av_frame_get_buffer(m_converted.get(), 0) < 0)
        return refuse(layout);
    sws_scale(m_scaler.get(), frame.data, frame.linesize, 0, layout.height, m_converted->data,
              m_converted->linesize);
    return m_converted.get();
}

bool VideoFrameFilter::prepareScaler(const Layout& layout) {
    if (m_scaler && layout == m_scalerLayout)
        return true;
    m_scalerLayout = layout;
    m_scaler.reset(sws_getContext(
        layout.width, layout.height, static_cast<AVPixelFormat>(layout.format), layout.width,
        layout.height, AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!m_scaler)
        return false;
    // Fails, harmlessly, for formats that have no range.
    const int* coefficients = sws_getCoefficients(SWS_CS_DEFAULT);
    sws_setColorspaceDetails(m_scaler.get(), coefficients, layout.fullRange, coefficients, 0, 0,
                             1 << 16, 1 << 16);
    return true;
}

const AVFrame* VideoFrameFilter::refuse(const Layout& layout) {
    if (!(layout == m_refused)) {
        const char* format = av_get_pix_fmt_name(static_cast<AVPixelFormat>(layout.format));
        qCWarning(lcMedia, "picture of %d x %d in %s refused", layout.width, layout.height,
                  format ? format : "an unknown format");
    }
    m_refused = layout;
    return nullptr;
}

}  // namespace orvelle
