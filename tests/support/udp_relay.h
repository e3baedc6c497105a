#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace orvelle {

/// What one direction of a UdpRelay does to datagrams.
struct RelayPath {
    int delayMs = 0;            ///< one way
    int jitterMs = 0;           ///< added at random, 0 to this; may reorder
    double lossPercent = 0;     ///< dropped at random
    int64_t bitsPerSecond = 0;  ///< rate of the bottleneck, 0 for none
    int queueBytes = 65536;     ///< the bottleneck's queue; what does not fit is dropped
    bool silent = false;        ///< swallows everything
};

enum class RelayDirection { ToCamera, ToClient };

/// A UDP path with faults between a client and one port of 127.0.0.1, for tests.
///
/// Listens on a port of 127.0.0.1 of its own and forwards on a thread of its own; each client
/// address gets its own socket towards the target. Random choices follow the seed. Everything
/// may be changed while it runs, from any thread.
class UdpRelay {
public:
    explicit UdpRelay(uint16_t targetPort, uint32_t seed = 1);
    ~UdpRelay();
    UdpRelay(const UdpRelay&) = delete;
    UdpRelay& operator=(const UdpRelay&) = delete;

    /// The port that clients send to.
    uint16_t port() const;

    void setPath(RelayDirection direction, const RelayPath& path);
    void setBothPaths(const RelayPath& path);
    /// Swallows everything both ways until switched off again.
    void setSilent(bool silent);

    /// Sees each datagram and returns what goes on in its place: itself, changed ones, more, none.
    /// Called on the relay's thread.
    using Datagram = std::vector<uint8_t>;
    using Tamper = std::function<std::vector<Datagram>(RelayDirection, const Datagram&)>;
    /// An empty one leaves all as it is. The one before is not called any more afterwards.
    void setTamper(Tamper tamper);

    /// Sends these as if they came from each client that it has seen.
    void playToCamera(std::vector<Datagram> datagrams);

    uint64_t forwardedDatagrams(RelayDirection direction) const;
    uint64_t droppedDatagrams(RelayDirection direction) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace orvelle
