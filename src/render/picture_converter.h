#pragma once

#include <QImage>
#include <QRect>
#include <QSize>

#include "frames/ffmpeg_io_ptr.h"

namespace orvelle {

/// Turns planar 4:2:0 pictures into RGB of any size, in the colours of the view's shader and with
/// every source pixel's share when it shrinks them, so that fine structures do not shimmer.
///
/// Keeps what it needs for one pair of sizes, so that nothing is set up again for each picture.
/// Belongs to one thread.
class PictureConverter {
public:
    /// An RGB picture in memory that is used again and again.
    class Target {
    public:
        QSize size() const { return m_size; }
        /// The pixels, borrowed: valid until the target is filled again or goes.
        QImage image() const;
        void clear();

    private:
        friend class PictureConverter;
        bool allocate(const QSize& size);

        FramePtr m_frame;
        QSize m_size;  ///< of what is shown: the memory may be a column wider
    };

    static bool accepts(const AVFrame& picture);
    /// Fills the target with a part of an accepted picture (with even left and top) at `size` in
    /// pixels: 0, or -1 when that is empty or memory lacks, and the target is empty.
    int convert(const AVFrame& picture, const QRect& part, const QSize& size, Target& target);

private:
    bool prepare(const QSize& sourceSize, const Target& target);

    ScalerPtr m_scaler;
    QSize m_sourceSize;
    QSize m_targetSize;
};

}  // namespace orvelle
