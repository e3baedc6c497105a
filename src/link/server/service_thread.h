#pragma once

#include "core/thread.h"
#include "link/server/client_table.h"
#include "link/server/search_responder.h"
#include "link/transport/closing_sockets.h"

namespace orvelle {

/// "link-server": accepts callers, reads their sockets, answers searches and tells the listener.
///
///     caller --HELLO--> welcomed --BYE, silence, broken protocol--> gone
///        '--no HELLO within 5 s--> gone
///
/// At its end it says goodbye to everyone. Owner: LinkServer.
class ServiceThread : public KvThread {
public:
    ServiceThread(const LinkServerConfig& config, LinkServerListener* listener,
                  SRTSOCKET listeningSocket, ClientTable& clients, SearchResponder& search,
                  ServerCounters& counters);

    void run() override;

private:
    /// One accepted socket.
    struct Peer {
        StreamRequest request;
        int64_t acceptedMs = 0;
        bool saidHello = false;
        SrtSocket socket;                      ///< until it is welcomed
        std::shared_ptr<ServerClient> client;  ///< from then on
    };

    void waitAndServe();
    void acceptAll();
    void readAll(SRTSOCKET socket);
    bool readOne(SRTSOCKET socket);
    void handle(SRTSOCKET socket, const Message& message);
    void handleUnwelcomed(SRTSOCKET socket, const Message& message);
    void handleControl(ServerClient& client, const Message& message);
    void hello(SRTSOCKET socket, uint8_t version);
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
    const SRTSOCKET m_listeningSocket;
    ClientTable& m_clients;
    SearchResponder& m_search;
    ServerCounters& m_counters;

    // Owned by this thread.
    SrtEpoll m_epoll;
    ClosingSockets m_closing;
    std::map<SRTSOCKET, Peer> m_peers;
    int64_t m_nextTickMs = 0;
};

}  // namespace orvelle
