#include "plain_decoding.h"

#include <time.h>

#include <chrono>
#include <future>
#include <thread>
#include <vector>

#include "frames/ffmpeg_ptr.h"
#include "video_file.h"

namespace orvelle::bench {

namespace {

using Clock = std::chrono::steady_clock;

double cpuSecondsOfThisThread() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// CPU that it took, in seconds.
double decodeInRealTime(const VideoFile& clip, Clock::time_point start, Clock::time_point end) {
    const AVCodec* codec = avcodec_find_decoder(clip.parameters->codec_id);
    const CodecContextPtr context(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(context.get(), clip.parameters.get());
    context->thread_count = 1;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        return 0.0;
    const FramePtr frame(av_frame_alloc());
    for (size_t i = 0; start < end; ++i, start += clip.frameTime) {
        std::this_thread::sleep_until(start);
        avcodec_send_packet(context.get(), clip.packets[i % clip.packets.size()].get());
        avcodec_receive_frame(context.get(), frame.get());
    }
    return cpuSecondsOfThisThread();
}

}  // namespace

double plainDecodingCpuPercent(const QString& path, int streams, int seconds) {
    const VideoFile clip = VideoFile::read(path);
    if (clip.packets.empty())
        return -1.0;
    const auto start = Clock::now();
    std::vector<std::future<double>> threads;
    for (int i = 0; i < streams; ++i)
        threads.push_back(std::async(std::launch::async, decodeInRealTime, std::cref(clip),
                                     start + i * clip.frameTime / streams,
                                     start + std::chrono::seconds(seconds)));
    double cpuSeconds = 0.0;
    for (std::future<double>& thread : threads)
        cpuSeconds += thread.get();
    return 100.0 * cpuSeconds / seconds;
}

}  // namespace orvelle::bench
