#include "encoded_clip.h"

#include "frames/ffmpeg_ptr.h"

#include <cstring>

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace orvelle::test {

namespace {

CodecContextPtr openEncoder(const ClipFormat& format) {
    const char* const usual = format.isHevc ? "libx265" : "libx264";
    const AVCodec* const codec =
        avcodec_find_encoder_by_name(format.encoder ? format.encoder : usual);
    CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!codec || !context)
        return nullptr;
    context->width = format.width;
    context->height = format.height;
    context->pix_fmt = static_cast<AVPixelFormat>(format.pixelFormat);
    context->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    context->time_base = {1, 15};
    context->gop_size = format.picturesPerKey;
    context->thread_count = 1;
    av_opt_set(context->priv_data, "preset", "ultrafast", 0);
    av_opt_set(context->priv_data, "tune", "zerolatency", 0);
    av_opt_set(context->priv_data, "x265-params", "log-level=none:pools=none:repeat-headers=1", 0);
    return avcodec_open2(context.get(), codec, nullptr) < 0 ? nullptr : std::move(context);
}

FramePtr greyPicture(const ClipFormat& format, int index) {
    FramePtr frame(av_frame_alloc());
    frame->format = format.pixelFormat;
    frame->width = format.width;
    frame->height = format.height;
    frame->pts = index;
    av_frame_get_buffer(frame.get(), 0);
    const int luma = 40 + index * 160 / format.pictures;
    const AVPixFmtDescriptor& layout =
        *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format.pixelFormat));
    for (int plane = 0; plane < 3; ++plane) {
        const int rows = AV_CEIL_RSHIFT(format.height, plane == 0 ? 0 : layout.log2_chroma_h);
        uint8_t* const bytes = frame->data[plane];
        const size_t size = static_cast<size_t>(frame->linesize[plane]) * static_cast<size_t>(rows);
        std::memset(bytes, plane == 0 ? luma : 128, size);
        for (size_t i = 0; format.isTextured && plane == 0 && i < size; ++i)
            bytes[i] = static_cast<uint8_t>((i * i / 97 + static_cast<size_t>(luma)) % 199);
    }
    return frame;
}

}  // namespace

std::vector<EncodedPicture> encodeClip(const ClipFormat& format) {
    std::vector<EncodedPicture> clip;
    const CodecContextPtr context = openEncoder(format);
    const PacketPtr packet(av_packet_alloc());
    for (int i = 0; context && i <= format.pictures; ++i) {
        const FramePtr frame = i < format.pictures ? greyPicture(format, i) : nullptr;
        avcodec_send_frame(context.get(), frame.get());
        while (avcodec_receive_packet(context.get(), packet.get()) == 0) {
            clip.push_back({{packet->data, packet->data + packet->size},
                            (packet->flags & AV_PKT_FLAG_KEY) != 0});
            av_packet_unref(packet.get());
        }
    }
    return clip;
}

}  // namespace orvelle::test
