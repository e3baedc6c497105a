#include "frames/input_packet.h"

#include <cstring>

KvBasePlayerInputPacket::KvBasePlayerInputPacket() = default;

KvBasePlayerInputPacket::KvBasePlayerInputPacket(const AVPacket* source, int codecId, int mediaType,
                                                 double timeSec)
    : m_packet(source ? av_packet_clone(source) : nullptr),
      m_codecId(codecId),
      m_mediaType(mediaType),
      m_timeSec(timeSec) {}

KvBasePlayerInputPacket::KvBasePlayerInputPacket(const AVPacket* source)
    : KvBasePlayerInputPacket(source, AV_CODEC_ID_NONE, kUnknownMedia, 0.0) {}

std::unique_ptr<KvBasePlayerInputPacket> KvBasePlayerInputPacket::copyOf(const void* data, int size,
                                                                         bool isKey, int codecId,
                                                                         int mediaType,
                                                                         double timeSec) {
    orvelle::PacketPtr packet(av_packet_alloc());
    // av_new_packet() appends the zeroed padding that bit readers run into.
    if (size < 0 || !packet || av_new_packet(packet.get(), size) < 0)
        return nullptr;
    if (size > 0)
        std::memcpy(packet->data, data, static_cast<size_t>(size));
    packet->flags = isKey ? AV_PKT_FLAG_KEY : 0;

    auto result = std::make_unique<KvBasePlayerInputPacket>();
    result->m_packet = std::move(packet);
    result->m_codecId = codecId;
    result->m_mediaType = mediaType;
    result->m_timeSec = timeSec;
    return result;
}

std::unique_ptr<KvBasePlayerInputPacket> KvBasePlayerInputPacket::deepCopy() const {
    auto copy =
        m_packet
            ? copyOf(m_packet->data, m_packet->size, isKey(), m_codecId, m_mediaType, m_timeSec)
            : std::make_unique<KvBasePlayerInputPacket>(nullptr, m_codecId, m_mediaType, m_timeSec);
    if (copy && m_packet && av_packet_copy_props(copy->m_packet.get(), m_packet.get()) < 0)
        return nullptr;
    return copy;
}

std::unique_ptr<KvBasePlayerInputPacket> KvBasePlayerInputPacket::reference() const {
    auto other = std::make_unique<KvBasePlayerInputPacket>(m_packet.get(), m_codecId, m_mediaType,
                                                           m_timeSec);
    return !m_packet || other->m_packet ? std::move(other) : nullptr;
}
