#pragma once

#include "core/thread.h"
#include "link/server/client_table.h"
#include "link/server/peer_ports.h"
#include "link/transport/closing_sockets.h"
#include "link/wire/socket_opening.h"

namespace orvelle {

/// "link-server": accepts the sockets of admitted clients, reads them and tells the listener.
///
///     accepted --OPEN--> opened --HELLO, sealed--> welcomed --BYE, silence, forgery--> gone
///        '------------------'--not within 3 s, or pushed out by 64 newer ones--> gone
///
/// At its end it says goodbye to everyone. Owner: LinkServer.
class ServiceThread : public KvThread {
public:
    ServiceThread(const LinkServerConfig& config, LinkServerListener* listener,
                  ClientTable& clients, PeerPorts& ports, ServerCounters& counters);

    void run() override;

    /// Accepts from a new listening socket. Any thread.
    void watch(SRTSOCKET listener);

private:
    /// One accepted socket.
    struct Peer {
        int64_t acceptedMs = 0;
        SrtSocket plain;  ///< until OPEN
        OpenMessage open;
        std::shared_ptr<SealedSocket> sealed;  ///< from OPEN on
        bool saidHello = false;
        std::shared_ptr<ServerClient> client;  ///< once it is welcomed
    };

    void waitAndServe();
    void acceptAll(SRTSOCKET listener);
    void dropOldestUnproved();
    void readAll(SRTSOCKET socket);
    bool readOne(SRTSOCKET socket);
    bool readOpen(SRTSOCKET socket, Peer& peer);
    bool answerOpen(Peer& peer, const OpenMessage& open);
    void handle(SRTSOCKET socket, const Message& message);
    void handleUnwelcomed(SRTSOCKET socket, const Message& message);
    void handleControl(ServerClient& client, const Message& message);
    void hello(SRTSOCKET socket);
    void welcomeControl(SRTSOCKET socket);
    void welcomeMedia(SRTSOCKET socket);
    void refuse(SRTSOCKET socket, int reason);
    void breakOff(SRTSOCKET socket, const char* why);
    void socketBroke(SRTSOCKET socket);
    void closeMedia(SRTSOCKET socket);
    void dropClient(const std::shared_ptr<ServerClient>& client, bool orderly);
    void forget(SRTSOCKET socket);
    void tick(int64_t nowMs);
    void sayGoodbyeToAll();

    // Fixed after construction.
    const int64_t m_nominalBitsPerSecond;
    LinkServerListener* const m_listener;
    ClientTable& m_clients;
    PeerPorts& m_ports;
    ServerCounters& m_counters;

    // Owned by this thread.
    SrtEpoll m_epoll;
    ClosingSockets m_closing;
    std::map<SRTSOCKET, Peer> m_peers;
    int64_t m_nextTickMs = 0;
};

}  // namespace orvelle
