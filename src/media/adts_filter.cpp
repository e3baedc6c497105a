#include "media/adts_filter.h"

#include "frames/parameter_sets.h"

namespace orvelle {

namespace {

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
    if (track && track.codec->extradata_size > 0)
        return track;
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
