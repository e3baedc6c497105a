#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>

#include "frames/input_packet.h"

namespace orvelle {

/// The newest group of pictures of a stream, from its key picture on, with the sound since: what
/// is needed to show the picture of this moment. It refers to the packets' bytes, about 1 MB at a
/// camera's usual rate. Belongs to one thread, or is guarded by its owner.
class PacketGroup {
public:
    using Packet = KvBasePlayerInputPacket;

    /// A group that grows beyond either is forgotten until its next key picture.
    static constexpr int64_t kMaxBytes = int64_t{16} << 20;
    static constexpr size_t kMaxPackets = 3000;

    /// Keeps a reference to the packet where it belongs to the group.
    void add(const Packet& packet);
    void clear();
    /// In the order of their arrival, but for the key picture, which comes first; empty before it.
    const std::deque<std::unique_ptr<Packet>>& packets() const { return m_packets; }

private:
    void beginAt(const Packet& key);
    void keep(std::unique_ptr<Packet> packet);

    std::deque<std::unique_ptr<Packet>> m_packets;
    int64_t m_bytes = 0;
};

}  // namespace orvelle
