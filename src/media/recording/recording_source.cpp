#include "media/recording/recording_source.h"

#include <utility>

#include "media/stages/base_player_decoder.h"

namespace orvelle {

RecordingSource::RecordingSource(KvBasePlayerInput* input, KvBasePlayerDecoder* decoder)
    : m_input(input), m_decoder(decoder) {}

bool RecordingSource::prepare() {
    std::lock_guard<std::mutex> lock(m_mutex);
    learn();
    return m_input && m_decoder;
}

double RecordingSource::attach(void* user, KvBasePlayerInput::PacketCallback tap) {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_input ? m_input->setPacketCallback(user, tap) : 0.0;
}

void RecordingSource::detach() {
    attach(nullptr, nullptr);
}

void RecordingSource::release() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_input)
        m_input->setPacketCallback(nullptr, nullptr);
    learn();
    m_input = nullptr;
    m_decoder = nullptr;
}

StreamParameters RecordingSource::videoParameters() {
    std::lock_guard<std::mutex> lock(m_mutex);
    learn();
    return m_lastVideo.copy();
}

StreamParameters RecordingSource::audioParameters() {
    std::lock_guard<std::mutex> lock(m_mutex);
    learn();
    return m_lastAudio.copy();
}

/// A decoder that is paused, or begins anew, knows nothing for a while.
void RecordingSource::learn() {
    if (!m_decoder)
        return;
    if (StreamParameters video = m_decoder->videoParameters())
        m_lastVideo = std::move(video);
    if (StreamParameters audio = m_decoder->audioParameters())
        m_lastAudio = std::move(audio);
}

}  // namespace orvelle
