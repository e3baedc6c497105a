#include "media/recording/recording_source.h"

#include "media/stages/base_player_decoder.h"

namespace orvelle {

bool RecordingSource::isComplete() const {
    std::lock_guard<std::mutex> lock(m_mutex);
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
    if (m_decoder) {
        m_lastVideo = m_decoder->videoParameters();
        m_lastAudio = m_decoder->audioParameters();
    }
    m_input = nullptr;
    m_decoder = nullptr;
}

StreamParameters RecordingSource::videoParameters() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_decoder ? m_decoder->videoParameters() : m_lastVideo.copy();
}

StreamParameters RecordingSource::audioParameters() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_decoder ? m_decoder->audioParameters() : m_lastAudio.copy();
}

}  // namespace orvelle
