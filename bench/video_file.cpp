#include "video_file.h"

#include <algorithm>
#include <cmath>

#include "frames/ffmpeg_io_ptr.h"

namespace orvelle::bench {

VideoFile VideoFile::read(const QString& path) {
    VideoFile file;
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, qPrintable(path), nullptr, nullptr) < 0)
        return file;
    const InputFormatPtr context(opened);
    if (avformat_find_stream_info(context.get(), nullptr) < 0)
        return file;
    const int video = av_find_best_stream(context.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video < 0)
        return file;
    const AVStream* stream = context->streams[video];
    file.parameters.reset(avcodec_parameters_alloc());
    avcodec_parameters_copy(file.parameters.get(), stream->codecpar);
    file.timeBase = stream->time_base;
    const AVRational rate = stream->avg_frame_rate;
    if (rate.num > 0 && rate.den > 0)
        file.frameTime = std::chrono::nanoseconds(static_cast<int64_t>(1e9 / av_q2d(rate)));
    for (PacketPtr packet(av_packet_alloc()); av_read_frame(context.get(), packet.get()) >= 0;
         packet.reset(av_packet_alloc()))
        if (packet->stream_index == video)
            file.packets.push_back(std::move(packet));
    return file;
}

int VideoFile::gaps() const {
    std::vector<int64_t> steps;
    for (size_t i = 1; i < packets.size(); ++i)
        steps.push_back(packets[i]->dts - packets[i - 1]->dts);
    if (steps.empty())
        return 0;
    std::vector<int64_t> sorted = steps;
    std::sort(sorted.begin(), sorted.end());
    const auto usual = static_cast<double>(std::max<int64_t>(sorted[sorted.size() / 2], 1));
    int missing = 0;
    for (const int64_t step : steps)
        missing +=
            std::max(static_cast<int>(std::lround(static_cast<double>(step) / usual)) - 1, 0);
    return missing;
}

}  // namespace orvelle::bench
