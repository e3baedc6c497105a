#include "encoded_clip.h"

#include "frames/ffmpeg_ptr.h"

#include <cstring>

extern "C" {
#include <libavutil/opt.h>
}

namespace orvelle::test {

namespace {

CodecContextPtr openEncoder(const ClipFormat& format) {
    const AVCodec* const codec =
        avcodec_find_encoder_by_name(format.isHevc ? "libx265" : "libx264");
    CodecContextPtr context(avcodec_alloc_context3(codec));
    if (!codec || !context)
        return nullptr;
    context->width = format.width;
    context->height = format.height;
    context->pix_fmt = AV_PIX_FMT_YUV420P;
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
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = format.width;
    frame->height = format.height;
    frame->pts = index;
    av_frame_get_buffer(frame.get(), 0);
    const size_t lumaBytes = static_cast<size_t>(frame->linesize[0]) * format.height;
    std::memset(frame->data[0], 40 + index * 160 / format.pictures, lumaBytes);
    for (const int plane : {1, 2})
        std::memset(frame->data[plane], 128,
                    static_cast<size_t>(frame->linesize[plane]) * ((format.height + 1) / 2));
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
