#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/buffer.h>
#include <libavutil/fifo.h>
#include <libavutil/frame.h>
}

namespace orvelle {

/// Deleter for the FFmpeg calls that take the address of the pointer and null it.
template <auto freeFunction>
struct FfmpegDeleter {
    template <class T>
    void operator()(T* object) const {
        freeFunction(&object);
    }
};

using PacketPtr = std::unique_ptr<AVPacket, FfmpegDeleter<av_packet_free>>;
using FramePtr = std::unique_ptr<AVFrame, FfmpegDeleter<av_frame_free>>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, FfmpegDeleter<avcodec_free_context>>;
using CodecParametersPtr =
    std::unique_ptr<AVCodecParameters, FfmpegDeleter<avcodec_parameters_free>>;
using BitstreamFilterPtr = std::unique_ptr<AVBSFContext, FfmpegDeleter<av_bsf_free>>;
using BufferPtr = std::unique_ptr<AVBufferRef, FfmpegDeleter<av_buffer_unref>>;
using FifoPtr = std::unique_ptr<AVFifo, FfmpegDeleter<av_fifo_freep2>>;

struct AudioFifoDeleter {
    void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
};
using AudioFifoPtr = std::unique_ptr<AVAudioFifo, AudioFifoDeleter>;

}  // namespace orvelle
