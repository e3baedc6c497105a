#pragma once

#include "platform/ipv4.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace orvelle {

/// A UDP socket over IPv4 whose calls do not block. One thread at a time.
class DatagramSocket {
public:
    /// The system's own number: an int, on Windows as wide as a pointer.
    using Descriptor = decltype(::socket(0, 0, 0));
    static constexpr Descriptor kNone = static_cast<Descriptor>(-1);

    DatagramSocket();  ///< not open when the system gives none; all calls then fail
    ~DatagramSocket();
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;

    bool isOpen() const { return m_descriptor != kNone; }
    Descriptor descriptor() const { return m_descriptor; }

    bool allowBroadcast();
    /// To an address and port that other programs of this machine may be bound to as well.
    bool bindShared(const sockaddr_in& address);
    /// To an address and port of its own.
    bool bindExclusively(const sockaddr_in& address);
    /// The same; further sockets of this program may bindBeside() it.
    bool bindAsGate(const sockaddr_in& address);
    /// Takes over what comes from `peer` to the port of a gate: the system hands it to this socket
    /// alone, whatever others send to the gate. Where the system cannot, the socket gets a port of
    /// its own. What came in between from others is read first.
    bool bindBeside(const sockaddr_in& gate, const sockaddr_in& peer);
    /// The port that it is bound to; 0 for none.
    uint16_t port() const;
    /// Gives the descriptor to a library that blocks on it and closes it.
    Descriptor release();
    /// Frees the port of a released descriptor at once, though the library closes it much later;
    /// it must still be open.
    static void giveUpPort(Descriptor descriptor);

    bool send(const void* bytes, size_t size, const sockaddr_in& to);
    /// By a descriptor that was released. Any thread, as long as its owner keeps it open.
    static bool sendOn(Descriptor descriptor, const void* bytes, size_t size,
                       const sockaddr_in& to);
    /// Size of the next datagram, of which what does not fit is lost; -1 when none waits.
    int receive(void* bytes, size_t size, sockaddr_in& from);
    /// False when none came within `ms`, which are waited for without a socket, too.
    bool waitForDatagram(int ms);
    /// The same for any of several; those that are not open are passed over.
    static bool waitForAny(std::initializer_list<const DatagramSocket*> sockets, int ms);

private:
    bool setOption(int option);
    void makeBlocking();

    Descriptor m_descriptor = kNone;
};

/// Of every network that is up, but the loopback and lines with one other end. Directed ones: the
/// all-ones address fails on a machine without a default route.
std::vector<in_addr> networkBroadcasts();

/// Reaches the programs of this machine that are bound to it or to every address.
in_addr loopbackBroadcast();

/// Where programs of this machine may listen, those of another system in it included.
std::vector<in_addr> loopbackTargets();

}  // namespace orvelle
