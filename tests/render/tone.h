#pragma once

#include <cstdint>
#include <vector>

#include "frames/ffmpeg_ptr.h"

namespace orvelle::test {

constexpr double kToneHz = 440.0;

/// A frame of a 440 Hz tone at half level that goes on from sample `first`; packed or planar.
FramePtr toneFrame(AVSampleFormat format, int sampleRate, int channels, int64_t first, int samples);

/// The share of the power in interleaved samples' first channel that is the tone; 0 for silence.
double toneShare(const int16_t* samples, int frames, int channels, int sampleRate);

}  // namespace orvelle::test
