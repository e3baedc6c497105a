#include "plain_decoding.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "frames/ffmpeg_ptr.h"
#include "process_usage.h"

namespace orvelle::bench {

namespace {

using Clock = std::chrono::steady_clock;

struct Clip {
    CodecParametersPtr parameters;
    std::vector<PacketPtr> packets;
    std::chrono::nanoseconds frameTime{0};
};

struct CloseInput {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

Clip readClip(const QString& path) {
    Clip clip;
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, qPrintable(path), nullptr, nullptr) < 0)
        return clip;
    const std::unique_ptr<AVFormatContext, CloseInput> context(opened);
    if (avformat_find_stream_info(context.get(), nullptr) < 0)
        return clip;
    const int video = av_find_best_stream(context.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video < 0)
        return clip;
    const AVStream* stream = context->streams[video];
    clip.parameters.reset(avcodec_parameters_alloc());
    avcodec_parameters_copy(clip.parameters.get(), stream->codecpar);
    clip.frameTime =
        std::chrono::nanoseconds(static_cast<int64_t>(1e9 / av_q2d(stream->avg_frame_rate)));
    for (PacketPtr packet(av_packet_alloc()); av_read_frame(context.get(), packet.get()) >= 0;
         packet.reset(av_packet_alloc()))
        if (packet->stream_index == video)
            clip.packets.push_back(std::move(packet));
    return clip;
}

void decodeInRealTime(const Clip& clip, Clock::time_point start, Clock::time_point end) {
    const AVCodec* codec = avcodec_find_decoder(clip.parameters->codec_id);
    const CodecContextPtr context(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(context.get(), clip.parameters.get());
    context->thread_count = 1;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return;
    const FramePtr frame(av_frame_alloc());
    for (size_t i = 0; start < end; ++i, start += clip.frameTime) {
        std::this_thread::sleep_until(start);
        avcodec_send_packet(context.get(), clip.packets[i % clip.packets.size()].get());
        avcodec_receive_frame(context.get(), frame.get());
    }
}

}  // namespace

double plainDecodingCpuPercent(const QString& path, int streams, int seconds) {
    const Clip clip = readClip(path);
    if (clip.packets.empty())
        return -1.0;
    const ProcessUsage before = ProcessUsage::now();
    const auto start = Clock::now();
    std::vector<std::thread> threads;
    for (int i = 0; i < streams; ++i)
        threads.emplace_back(decodeInRealTime, std::cref(clip),
                             start + i * clip.frameTime / streams,
                             start + std::chrono::seconds(seconds));
    for (std::thread& thread : threads)
        thread.join();
    return cpuPercent(before, ProcessUsage::now());
}

}  // namespace orvelle::bench
