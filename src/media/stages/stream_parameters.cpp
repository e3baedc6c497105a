#include "media/stages/stream_parameters.h"

#include <algorithm>
#include <utility>

#include "frames/parameter_sets.h"

namespace orvelle {

bool hasExtradata(const AVCodecParameters& codec, const std::vector<uint8_t>& bytes) {
    const uint8_t* own = codec.extradata;
    return std::equal(own, own + codec.extradata_size, bytes.begin(), bytes.end());
}

StreamParameters StreamParameters::copy() const {
    StreamParameters copied;
    if (!codec)
        return copied;
    copied.codec.reset(avcodec_parameters_alloc());
    if (!copied.codec || avcodec_parameters_copy(copied.codec.get(), codec.get()) < 0)
        copied.codec.reset();
    copied.timeBase = timeBase;
    return copied;
}

namespace {

CodecParametersPtr parametersOf(const AVCodecContext& context) {
    CodecParametersPtr codec(avcodec_parameters_alloc());
    if (!codec || avcodec_parameters_from_context(codec.get(), &context) < 0)
        return nullptr;
    return codec;
}

}  // namespace

void PublishedParameters::publish(const AVCodecContext& context,
                                  const std::vector<uint8_t>& extradata) {
    CodecParametersPtr codec = parametersOf(context);
    if (!codec || (!extradata.empty() && !setExtradata(*codec, extradata)))
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_parameters.codec = std::move(codec);
    m_parameters.timeBase = context.time_base;
}

void PublishedParameters::clear() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_parameters = {};
}

StreamParameters PublishedParameters::copy() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_parameters.copy();
}

}  // namespace orvelle
