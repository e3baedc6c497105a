#pragma once

#include "link/server/client_table.h"

namespace orvelle {

/// Decides over each caller before the transport accepts it. Runs on the transport's receive
/// thread, so everything it needs is at hand: nothing is derived or waited for there.
class ListenerGate {
public:
    ListenerGate(std::string uid, std::string passphrase, const ClientTable& clients);

    /// Installs it on a listening socket; must outlive the socket.
    bool installOn(SRTSOCKET listener);

    /// 0 to let the caller go on with the passphrase, else the code to reject it with.
    int judge(const char* streamId) const;

private:
    static int listenCallback(void* self, SRTSOCKET socket, int handshakeVersion,
                              const sockaddr* peer, const char* streamId);

    // Fixed after construction.
    const std::string m_uid;
    const std::string m_passphrase;
    const ClientTable& m_clients;
};

}  // namespace orvelle
