#include "render/tone.h"

#include <cmath>

namespace orvelle::test {
namespace {

void store(uint8_t* plane, int index, AVSampleFormat format, double value) {
    if (av_get_packed_sample_fmt(format) == AV_SAMPLE_FMT_FLT)
        reinterpret_cast<float*>(plane)[index] = static_cast<float>(value);
    else
        reinterpret_cast<int16_t*>(plane)[index] = static_cast<int16_t>(std::lround(value * 32767));
}

}  // namespace

FramePtr toneFrame(AVSampleFormat format, int sampleRate, int channels, int64_t first,
                   int samples) {
    FramePtr frame(av_frame_alloc());
    frame->format = format;
    frame->sample_rate = sampleRate;
    frame->nb_samples = samples;
    av_channel_layout_default(&frame->ch_layout, channels);
    av_frame_get_buffer(frame.get(), 0);
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    for (int i = 0; i < samples; ++i) {
        const double phase = 2 * M_PI * kToneHz * static_cast<double>(first + i) / sampleRate;
        for (int c = 0; c < channels; ++c)
            store(frame->extended_data[isPlanar ? c : 0], isPlanar ? i : i * channels + c, format,
                  0.5 * std::sin(phase));
    }
    return frame;
}

double toneShare(const int16_t* samples, int frames, int channels, int sampleRate) {
    double sine = 0, cosine = 0, power = 0;
    for (int i = 0; i < frames; ++i) {
        const double value = samples[i * channels];
        sine += value * std::sin(2 * M_PI * kToneHz * i / sampleRate);
        cosine += value * std::cos(2 * M_PI * kToneHz * i / sampleRate);
        power += value * value;
    }
    return power < frames ? 0.0 : 2 * (sine * sine + cosine * cosine) / (power * frames);
}

}  // namespace orvelle::test
