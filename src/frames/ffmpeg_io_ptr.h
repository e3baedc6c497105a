#pragma once

#include "frames/ffmpeg_ptr.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

// Handles of FFmpeg libraries that this room does not link: whoever uses one links its library.

namespace orvelle {

struct ScalerDeleter {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using ScalerPtr = std::unique_ptr<SwsContext, ScalerDeleter>;

using ResamplerPtr = std::unique_ptr<SwrContext, FfmpegDeleter<swr_free>>;

/// Of avformat_open_input(), which frees its argument itself when it fails.
using InputFormatPtr = std::unique_ptr<AVFormatContext, FfmpegDeleter<avformat_close_input>>;

/// Of avformat_alloc_output_context2(); closes the file too when one was opened into `pb`.
/// The trailer is the owner's to write.
struct OutputFormatDeleter {
    void operator()(AVFormatContext* format) const {
        if (format->oformat && !(format->oformat->flags & AVFMT_NOFILE))
            avio_closep(&format->pb);
        avformat_free_context(format);
    }
};
using OutputFormatPtr = std::unique_ptr<AVFormatContext, OutputFormatDeleter>;

}  // namespace orvelle
