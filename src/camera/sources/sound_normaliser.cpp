#include "camera/sources/sound_normaliser.h"

#include <utility>

#include "camera/camera_log.h"
#include "camera/encoding/time_base.h"
#include "frames/camera_codecs.h"
#include "link/limits.h"

namespace orvelle {

SoundNormaliser::SoundNormaliser(AVCodecID codec, Deliver deliver)
    : m_codec(codec), m_deliver(std::move(deliver)), m_block(av_frame_alloc()) {}

QString SoundNormaliser::open(const AVStream& stream) {
    m_decoder.reset();
    m_isPassing = false;
    if (m_codec == AV_CODEC_ID_NONE)
        return {};
    m_parameters.reset(avcodec_parameters_alloc());
    const AVCodecParameters& source = *stream.codecpar;
    if (!m_parameters || avcodec_parameters_copy(m_parameters.get(), &source) < 0)
        return QStringLiteral("out of memory");
    m_adts = adtsFormatOf(source.extradata, source.extradata_size);
    m_isPassing = source.codec_id == AV_CODEC_ID_AAC && m_codec == AV_CODEC_ID_AAC &&
                  (m_adts || source.extradata_size == 0);
    return m_isPassing ? QString() : startEncoding("its codec");
}

QString SoundNormaliser::startEncoding(const char* reason) {
    qCInfo(lcCamera, "the source's sound is encoded anew: %s", reason);
    m_isPassing = false;
    const AVCodec* decoder = avcodec_find_decoder(m_parameters->codec_id);
    CodecContextPtr context(decoder ? avcodec_alloc_context3(decoder) : nullptr);
    if (!context || avcodec_parameters_to_context(context.get(), m_parameters.get()) < 0)
        return QStringLiteral("no decoder for the source's sound");
    context->pkt_timebase = kMicroseconds;
    context->thread_count = 1;
    if (avcodec_open2(context.get(), decoder, nullptr) < 0)
        return QStringLiteral("the source's sound cannot be decoded");
    m_decoder = std::move(context);
    m_resampler.reset();
    return m_encoder.open(m_codec);
}

void SoundNormaliser::push(const AVPacket& packet, bool wanted) {
    if (!wanted)
        return;
    if (m_isPassing && !pass(packet))
        startEncoding("a frame that does not pass");
    if (m_decoder)
        decode(packet);
}

// False when the frame is neither raw AAC of a known format nor ADTS, or too large.
bool SoundNormaliser::pass(const AVPacket& packet) {
    std::vector<uint8_t> bytes;
    if (!startsWithAdts(packet.data, packet.size)) {
        if (!m_adts)
            return false;
        bytes = adtsHeader(*m_adts, packet.size);
    }
    bytes.insert(bytes.end(), packet.data, packet.data + packet.size);
    if (bytes.size() > size_t{kMaxAudioFrameBytes})
        return false;
    EncodedFrame frame;
    frame.medium = Medium::kAudio;
    frame.codecId = static_cast<uint16_t>(cameraIdOfCodec(AV_CODEC_ID_AAC));
    frame.isKey = true;
    frame.timeUs = packet.pts;
    frame.bytes = std::make_shared<std::vector<uint8_t>>(std::move(bytes));
    m_deliver(frame);
    return true;
}

void SoundNormaliser::decode(const AVPacket& packet) {
    if (avcodec_send_packet(m_decoder.get(), &packet) < 0)
        qCDebug(lcCamera, "a sound packet of the source cannot be decoded");
    while (avcodec_receive_frame(m_decoder.get(), m_block.get()) >= 0) {
        encodeBlock(*m_block);
        av_frame_unref(m_block.get());
    }
}

void SoundNormaliser::encodeBlock(AVFrame& block) {
    if (!m_encoder.isOpen() || !openResampler(block))
        return;
    const int room = swr_get_out_samples(m_resampler.get(), block.nb_samples);
    if (room <= 0)
        return;
    m_samples.resize(size_t(room));
    auto* out = reinterpret_cast<uint8_t*>(m_samples.data());
    const int count =
        swr_convert(m_resampler.get(), &out, room, const_cast<const uint8_t**>(block.extended_data),
                    block.nb_samples);
    if (count > 0)
        m_encoder.encode(m_samples.data(), count, block.best_effort_timestamp, m_deliver);
}

bool SoundNormaliser::openResampler(AVFrame& block) {
    const int channels = block.ch_layout.nb_channels;
    if (m_resampler && m_resamplerRate == block.sample_rate && m_resamplerFormat == block.format &&
        m_resamplerChannels == channels)
        return true;
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    SwrContext* context = nullptr;
    const int result = swr_alloc_set_opts2(
        &context, &mono, AV_SAMPLE_FMT_FLT, m_encoder.sampleRate(), &block.ch_layout,
        static_cast<AVSampleFormat>(block.format), block.sample_rate, 0, nullptr);
    m_resampler.reset(context);
    if (result < 0 || swr_init(context) < 0) {
        m_resampler.reset();
        return false;
    }
    m_resamplerRate = block.sample_rate;
    m_resamplerFormat = block.format;
    m_resamplerChannels = channels;
    return true;
}

}  // namespace orvelle
