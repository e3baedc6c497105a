#pragma once

#include "frames/ffmpeg_io_ptr.h"

namespace orvelle {

/// Lets decoded pictures through that the view can draw: planar 4:2:0 in limited range.
///
/// Such pictures pass untouched, others are converted, impossible ones are refused. Belongs to
/// one decoding thread.
class VideoFrameFilter {
public:
    /// The longest side of a picture, in pixels.
    static constexpr int kLongestSide = 8192;

    /// `frame` itself, or the converted picture, valid until the next call; null when refused.
    const AVFrame* accept(const AVFrame& frame);

private:
    struct Layout {
        int width = 0;
        int height = 0;
        int format = -1;
        bool fullRange = false;
        bool operator==(const Layout& o) const {
            return width == o.width && height == o.height && format == o.format &&
                   fullRange == o.fullRange;
        }
    };

    const AVFrame* convert(const AVFrame& frame, const Layout& layout);
    bool prepareScaler(const Layout& layout);
    const AVFrame* refuse(const Layout& layout);

    Layout m_scalerLayout;
    ScalerPtr m_scaler;
    FramePtr m_converted;
    Layout m_refused;  ///< logged last, so that a run of such pictures gives one line
};

}  // namespace orvelle
