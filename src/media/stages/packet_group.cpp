#include "media/stages/packet_group.h"

#include <utility>

namespace orvelle {

namespace {

/// Sound of a key picture's moment that came before it; further ahead, the clocks differ.
constexpr double kMaxSoundAheadSec = 1.0;

bool belongsTo(const KvBasePlayerInputPacket& sound, const KvBasePlayerInputPacket& key) {
    const double aheadSec = sound.time() - key.time();
    return !sound.isVideo() && aheadSec >= 0.0 && aheadSec < kMaxSoundAheadSec;
}

}  // namespace

void PacketGroup::add(const Packet& packet) {
    if (!packet.packet() || packet.packet()->size <= 0)
        return;
    if (packet.isVideo() && packet.isKey())
        beginAt(packet);
    else if (!m_packets.empty())
        keep(packet.reference());
}

void PacketGroup::beginAt(const Packet& key) {
    std::deque<std::unique_ptr<Packet>> former = std::move(m_packets);
    clear();
    keep(key.reference());
    for (std::unique_ptr<Packet>& packet : former) {
        if (belongsTo(*packet, key))
            keep(std::move(packet));
    }
}

void PacketGroup::keep(std::unique_ptr<Packet> packet) {
    // Without one packet those that follow could not be decoded.
    const bool isLost = !packet;
    if (packet) {
        m_bytes += packet->packet()->size;
        m_packets.push_back(std::move(packet));
    }
    if (isLost || m_bytes > kMaxBytes || m_packets.size() > kMaxPackets)
        clear();
}

void PacketGroup::clear() {
    m_packets.clear();
    m_bytes = 0;
}

}  // namespace orvelle
