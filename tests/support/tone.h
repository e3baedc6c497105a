#pragma once

#include <cmath>

#include "frames/ffmpeg_ptr.h"

namespace orvelle::test {

constexpr double kToneHz = 440.0;

/// A frame of signed 16-bit samples (packed or planar) of a tone at half level that goes on from
/// sample `first`.
inline FramePtr toneFrame(AVSampleFormat format, int rate, int channels, int64_t first, int count) {
    FramePtr frame(av_frame_alloc());
    frame->format = format;
    frame->sample_rate = rate;
    frame->nb_samples = count;
    av_channel_layout_default(&frame->ch_layout, channels);
    av_frame_get_buffer(frame.get(), 0);
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    for (int i = 0; i < count * channels; ++i) {
        const double phase = 2 * M_PI * kToneHz * static_cast<double>(first + i / channels) / rate;
        reinterpret_cast<int16_t*>(
            frame->extended_data[isPlanar ? i % channels : 0])[isPlanar ? i / channels : i] =
            static_cast<int16_t>(16384 * std::sin(phase));
    }
    return frame;
}

/// The share of the tone in the power of stereo samples' left channel; 0 for silence.
inline double toneShare(const int16_t* samples, int frames, int rate) {
    double sine = 0, cosine = 0, power = 0;
    for (int i = 0; i < frames; ++i) {
        const double value = samples[2 * i];
        sine += value * std::sin(2 * M_PI * kToneHz * i / rate);
        cosine += value * std::cos(2 * M_PI * kToneHz * i / rate);
        power += value * value;
    }
    return power < frames ? 0.0 : 2 * (sine * sine + cosine * cosine) / (power * frames);
}

}  // namespace orvelle::test
