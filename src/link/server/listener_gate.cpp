#include "link/server/listener_gate.h"

#include "link/limits.h"

#include <utility>

namespace orvelle {

ListenerGate::ListenerGate(std::string uid, std::string passphrase, const ClientTable& clients)
    : m_uid(std::move(uid)), m_passphrase(std::move(passphrase)), m_clients(clients) {}

bool ListenerGate::installOn(SRTSOCKET listener) {
    return srt_listen_callback(listener, &ListenerGate::listenCallback, this) == 0;
}

int ListenerGate::judge(const char* streamId) const {
    const auto request = decodeStreamId(streamId ? streamId : "");
    if (!request)
        return kRejectBadRequest;
    if (request->version != kProtocolVersion)
        return kRejectVersion;
    if (request->uid != m_uid)
        return kRejectUnknownUid;
    if (request->purpose == StreamPurpose::Probe)
        return kRejectProbeFound;
    if (request->account != kLinkAccount)
        return kRejectAccount;
    if (request->purpose == StreamPurpose::Control && m_clients.isFull())
        return kRejectTooManyClients;
    return 0;
}

int ListenerGate::listenCallback(void* self, SRTSOCKET socket, int, const sockaddr*,
                                 const char* streamId) {
    const auto* gate = static_cast<const ListenerGate*>(self);
    int code = gate->judge(streamId);
    // A socket whose passphrase was not taken would go on in clear.
    if (code == 0 && !setSocketOption(socket, SRTO_PASSPHRASE, gate->m_passphrase))
        code = kRejectBadRequest;
    if (code == 0)
        return 0;
    srt_setrejectreason(socket, code);
    return -1;
}

}  // namespace orvelle
