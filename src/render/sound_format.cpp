#include "render/sound_format.h"

#include <QtDebug>

#include <algorithm>

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace orvelle {
namespace {

constexpr int kMaxChannels = 2;

}  // namespace

int64_t SoundFormat::channelLayout() const {
    return static_cast<int64_t>(channels == 1 ? AV_CH_LAYOUT_MONO : AV_CH_LAYOUT_STEREO);
}

bool SoundFormat::operator==(const SoundFormat& other) const {
    return sampleRate == other.sampleRate && channels == other.channels &&
           sampleFormat == other.sampleFormat;
}

AVSampleFormat sampleFormatOf(const QAudioFormat& format) {
    switch (format.sampleSize()) {
        case 8:
            return AV_SAMPLE_FMT_U8;
        case 16:
            return AV_SAMPLE_FMT_S16;
        case 32:
            return format.sampleType() == QAudioFormat::Float ? AV_SAMPLE_FMT_FLT
                                                              : AV_SAMPLE_FMT_S32;
        case 64:
            return AV_SAMPLE_FMT_DBL;
        default:
            return AV_SAMPLE_FMT_NONE;
    }
}

SoundFormat soundFormatOf(const QAudioFormat& format) {
    return {format.sampleRate(), format.channelCount(), sampleFormatOf(format)};
}

QAudioFormat negotiateFormat(const QAudioDeviceInfo& device, const QAudioFormat& wanted) {
    qDebug() << "PCM Player src format =" << wanted;
    QAudioFormat format = wanted;
    format.setSampleSize(16);
    format.setSampleType(QAudioFormat::SignedInt);
    format.setChannelCount(std::clamp(wanted.channelCount(), 1, kMaxChannels));
    qDebug() << "PCM Player format =" << format;
    if (!device.isFormatSupported(format)) {
        qDebug("format not support, reformat");
        format = device.nearestFormat(format);
        qDebug() << "PCM Player real format =" << format;
    }
    return format;
}

}  // namespace orvelle
