#pragma once

#include <algorithm>
#include <vector>

#include "frames/ffmpeg_ptr.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace orvelle::test {

/// One compressed picture, Annex B with parameter sets before each key frame.
struct EncodedPicture {
    std::vector<uint8_t> bytes;
    bool isKey = false;
};

struct ClipFormat {
    bool isHevc = false;
    int width = 64, height = 48;
    int pictures = 10, picturesPerKey = 5;
    const char* encoder = nullptr;  ///< FFmpeg's name, in place of libx264 and libx265
    AVPixelFormat pixelFormat = AV_PIX_FMT_YUV420P;
    const char* crf = "23";
    int disposable = 0;  ///< pictures between two that later ones refer to; H.264
    bool isRefreshed =
        false;  ///< one key frame, then a stripe a picture that refers to none; H.264
};

inline CodecContextPtr openClipEncoder(const ClipFormat& format) {
    const char* const usual = format.isHevc ? "libx265" : "libx264";
    const AVCodec* const codec =
        avcodec_find_encoder_by_name(format.encoder ? format.encoder : usual);
    CodecContextPtr context(avcodec_alloc_context3(codec));
    context->width = format.width;
    context->height = format.height;
    context->pix_fmt = format.pixelFormat;
    context->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    context->time_base = {1, 15};
    context->gop_size = format.picturesPerKey;
    context->thread_count = 1;
    av_opt_set(context->priv_data, "preset", "ultrafast", 0);
    av_opt_set(context->priv_data, "tune", "zerolatency", 0);
    av_opt_set(context->priv_data, "crf", format.crf, 0);
    context->max_b_frames = format.disposable;
    av_opt_set_int(context->priv_data, "intra-refresh", format.isRefreshed, 0);
    av_opt_set(context->priv_data, "x265-params", "log-level=none:pools=none:repeat-headers=1", 0);
    return codec && avcodec_open2(context.get(), codec, nullptr) == 0 ? std::move(context)
                                                                      : nullptr;
}

/// A picture of even grey, lighter with each index.
inline FramePtr clipPicture(const ClipFormat& format, int index) {
    FramePtr frame(av_frame_alloc());
    frame->format = format.pixelFormat;
    frame->width = format.width;
    frame->height = format.height;
    av_frame_get_buffer(frame.get(), 0);
    const int luma = 40 + index * 160 / format.pictures;
    const AVPixFmtDescriptor& layout = *av_pix_fmt_desc_get(format.pixelFormat);
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = AV_CEIL_RSHIFT(format.height, plane == 0 ? 0 : layout.log2_chroma_h);
        std::fill_n(frame->data[plane], frame->linesize[plane] * rows,
                    static_cast<uint8_t>(plane == 0 ? luma : 128));
    }
    return frame;
}

/// The pictures that `draw` makes of clipPicture()'s by their index, in the order of decoding.
/// Empty when the encoder cannot be had.
template <class Draw>
std::vector<EncodedPicture> encodeClip(const ClipFormat& format, Draw draw) {
    std::vector<EncodedPicture> clip;
    const CodecContextPtr context = openClipEncoder(format);
    const PacketPtr packet(av_packet_alloc());
    for (int i = 0; context && i <= format.pictures; ++i) {
        const FramePtr frame = i < format.pictures ? clipPicture(format, i) : nullptr;
        if (frame) {
            frame->pts = i;
            draw(*frame, i);
        }
        avcodec_send_frame(context.get(), frame.get());
        while (avcodec_receive_packet(context.get(), packet.get()) == 0) {
            clip.push_back({{packet->data, packet->data + packet->size},
                            (packet->flags & AV_PKT_FLAG_KEY) != 0});
            av_packet_unref(packet.get());
        }
    }
    return clip;
}

inline std::vector<EncodedPicture> encodeClip(const ClipFormat& format) {
    return encodeClip(format, [](AVFrame&, int) {});
}

}  // namespace orvelle::test
