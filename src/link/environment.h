#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Settings of the link that come from the environment; read at each use.
namespace orvelle {

/// ORVELLE_LINK_LOOPBACK_ONLY=1: no datagram leaves this machine.
bool isLinkLoopbackOnly();

/// ORVELLE_LINK_UNBOUNDED=1: finding and login wait until they are aborted.
bool isLinkUnbounded();

/// ORVELLE_DISCOVERY_PORT, or the well-known port of the LAN search.
uint16_t discoveryPort();

/// Host (a numeric IPv4 address or "localhost") and port of a camera.
struct HostAndPort {
    std::string host;
    uint16_t port = 0;
};

/// The entry of `uid` in ORVELLE_CAMERA_ADDRESSES="UID=host:port,UID=host:port".
std::optional<HostAndPort> configuredCameraAddress(const std::string& uid);

}  // namespace orvelle
