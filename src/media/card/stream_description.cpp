#include "media/card/stream_description.h"

#include <array>
#include <vector>

#include "frames/input_packet.h"
#include "frames/parameter_sets.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

namespace orvelle {

namespace {

constexpr int kAlawRate = 8000;
constexpr int kAdtsHeaderBytes = 7;
constexpr std::array kAacRates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                               22050, 16000, 12000, 11025, 8000,  7350};

struct ParserDeleter {
    void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
};

StreamParameters newParameters(AVMediaType type, int codecId) {
    StreamParameters parameters;
    parameters.codec.reset(avcodec_parameters_alloc());
    if (parameters.codec) {
        parameters.codec->codec_type = type;
        parameters.codec->codec_id = static_cast<AVCodecID>(codecId);
    }
    return parameters;
}

}  // namespace

StreamParameters describePictures(const KvBasePlayerInputPacket& key) {
    const AVPacket& packet = *key.packet();
    StreamParameters pictures = newParameters(AVMEDIA_TYPE_VIDEO, key.codecId());
    const std::unique_ptr<AVCodecParserContext, ParserDeleter> parser(
        av_parser_init(key.codecId()));
    const CodecContextPtr context(avcodec_alloc_context3(nullptr));
    if (!pictures || !parser || !context)
        return {};
    context->codec_type = AVMEDIA_TYPE_VIDEO;
    context->codec_id = pictures.codec->codec_id;
    parser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
    uint8_t* parsed = nullptr;
    int parsedBytes = 0;
    av_parser_parse2(parser.get(), context.get(), &parsed, &parsedBytes, packet.data, packet.size,
                     AV_NOPTS_VALUE, AV_NOPTS_VALUE, 0);
    pictures.codec->width = parser->width;
    pictures.codec->height = parser->height;
    pictures.codec->format = parser->format;
    const std::vector<uint8_t> sets =
        parameterSets(pictures.codec->codec_id, packet.data, static_cast<size_t>(packet.size));
    const bool isKnown = parser->width > 0 && parser->height > 0 && !sets.empty();
    return isKnown && setExtradata(*pictures.codec, sets) ? std::move(pictures)
                                                          : StreamParameters();
}

StreamParameters describeSound(const KvBasePlayerInputPacket& sound) {
    StreamParameters track = newParameters(AVMEDIA_TYPE_AUDIO, sound.codecId());
    if (!track)
        return {};
    if (sound.codecId() == AV_CODEC_ID_PCM_ALAW) {
        track.codec->sample_rate = kAlawRate;
        track.codec->bits_per_coded_sample = 8;
        track.codec->block_align = 1;
        av_channel_layout_default(&track.codec->ch_layout, 1);
        return track;
    }
    const AVPacket& packet = *sound.packet();
    if (sound.codecId() != AV_CODEC_ID_AAC || packet.size < kAdtsHeaderBytes)
        return {};
    const size_t rate = packet.data[2] >> 2 & 15;
    const int channels = (packet.data[2] & 1) << 2 | packet.data[3] >> 6;
    if (rate >= kAacRates.size() || channels == 0)
        return {};
    track.codec->sample_rate = kAacRates.at(rate);
    av_channel_layout_default(&track.codec->ch_layout, channels);
    return track;
}

}  // namespace orvelle
