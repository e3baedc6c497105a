#include "media/stages/adts_filter.h"

#include <iterator>

#include "frames/parameter_sets.h"

namespace orvelle {

namespace {

constexpr int kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                          22050, 16000, 12000, 11025, 8000,  7350};

/// The decoder may not have heard of it yet.
void applyFormat(uint32_t format, AVCodecParameters& codec) {
    const uint32_t rate = format >> 10 & 0xF, channels = format >> 6 & 0x7;
    if (rate < std::size(kRates))
        codec.sample_rate = kRates[rate];
    if (channels > 0)
        av_channel_layout_default(&codec.ch_layout, channels == 7 ? 8 : static_cast<int>(channels));
}

BitstreamFilterPtr openFilter(const StreamParameters& source) {
    AVBSFContext* made = nullptr;
    const AVBitStreamFilter* kind = av_bsf_get_by_name("aac_adtstoasc");
    if (!kind || av_bsf_alloc(kind, &made) < 0)
        return nullptr;
    BitstreamFilterPtr filter(made);
    filter->time_base_in = {1, source.codec->sample_rate};
    if (avcodec_parameters_copy(filter->par_in, source.codec.get()) < 0 ||
        av_bsf_init(filter.get()) < 0)
        return nullptr;
    return filter;
}

}  // namespace

/// The two bytes behind the sync word: 2 bits of profile, 4 of the rate, 1 private, 3 of channels,
/// and others.
uint32_t AdtsFilter::formatOf(const AVPacket& packet) {
    const uint8_t* bytes = packet.data;
    if (packet.size < 7 || bytes[0] != 0xFF || (bytes[1] & 0xF6) != 0xF0)
        return 0;
    return 0x10000U | ((uint32_t{bytes[2]} << 8 | bytes[3]) & 0xFDC0U);
}

StreamParameters AdtsFilter::open(const StreamParameters& source, const AVPacket& sample) {
    m_filter = openFilter(source);
    const PacketPtr first(av_packet_clone(&sample));
    if (!m_filter || !first || !apply(*first)) {
        m_filter.reset();
        return {};
    }
    StreamParameters track = source.copy();
    size_t size = 0;
    const uint8_t* header = av_packet_get_side_data(first.get(), AV_PKT_DATA_NEW_EXTRADATA, &size);
    if (track && header && !setExtradata(*track.codec, {header, header + size}))
        track = {};
    if (track && track.codec->extradata_size > 0) {
        if (const uint32_t format = formatOf(sample))
            applyFormat(format, *track.codec);
        return track;
    }
    m_filter.reset();
    return {};
}

bool AdtsFilter::apply(AVPacket& packet) {
    if (av_bsf_send_packet(m_filter.get(), &packet) < 0) {
        av_bsf_flush(m_filter.get());
        return false;
    }
    return av_bsf_receive_packet(m_filter.get(), &packet) == 0 && packet.size > 0;
}

}  // namespace orvelle
