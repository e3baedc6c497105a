#pragma once

#include <QAudioDeviceInfo>
#include <QAudioFormat>

#include <cstdint>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace orvelle {

/// A sound device's sample layout in FFmpeg's terms.
struct SoundFormat {
    int sampleRate = 0;
    int channels = 0;
    AVSampleFormat sampleFormat = AV_SAMPLE_FMT_NONE;

    bool isValid() const {
        return sampleRate > 0 && channels > 0 && sampleFormat != AV_SAMPLE_FMT_NONE;
    }
    int frameBytes() const { return channels * av_get_bytes_per_sample(sampleFormat); }
    /// The channel mask: mono or stereo.
    int64_t channelLayout() const;
    bool operator==(const SoundFormat& other) const;
};

/// The packed sample format that holds a device's samples; AV_SAMPLE_FMT_NONE for an odd size.
AVSampleFormat sampleFormatOf(const QAudioFormat& format);

SoundFormat soundFormatOf(const QAudioFormat& format);

/// `wanted` as signed 16 bits and at most two channels, or the nearest that the device supports.
QAudioFormat negotiateFormat(const QAudioDeviceInfo& device, const QAudioFormat& wanted);

}  // namespace orvelle
