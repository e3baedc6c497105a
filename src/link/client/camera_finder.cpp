#include "link/client/camera_finder.h"

#include "link/client/caller_socket.h"
#include "link/client/lan_query.h"
#include "link/clock.h"
#include "link/environment.h"
#include "link/limits.h"
#include "link/link_log.h"
#include "link/result_codes.h"

namespace orvelle {

namespace {

constexpr int64_t kFindMs = 2000;
// Time for the LAN to answer once the configured host has said that it does not know the UID.
constexpr int64_t kFindAfterRefusalMs = 800;
constexpr int kSliceMs = 10;

class CameraFinder {
public:
    CameraFinder(const std::string& uid, const CallerSocketFactory& sockets)
        : m_uid(uid), m_lan(uid) {
        startProbe(sockets);
    }

    // One slice of the search; the address once it is known.
    std::optional<sockaddr_in> step() {
        if (const auto answer = m_lan.next(kSliceMs))
            return answer->address;
        if (!m_probe)
            return std::nullopt;
        m_probe->advance();
        if (m_probe->isPending())
            return std::nullopt;
        m_probeResult = m_probe->result();
        m_probe.reset();
        return m_probeResult == 0 ? std::optional(m_configured) : std::nullopt;
    }

    bool isOver(int64_t elapsedMs) const {
        if (m_probeResult != 0)
            return elapsedMs >= kFindAfterRefusalMs;
        return !isLinkUnbounded() && elapsedMs >= kFindMs;
    }

    int failure() const { return m_probeResult != 0 ? m_probeResult : int{LINK_ER_NOT_FOUND}; }

private:
    void startProbe(const CallerSocketFactory& sockets) {
        const auto configured = configuredCameraAddress(m_uid);
        if (!configured)
            return;
        const auto address = ipv4Address(configured->host, configured->port);
        if (!address) {
            qCWarning(lcLink, "camera address \"%s\" is not numeric", configured->host.c_str());
            return;
        }
        m_configured = *address;
        StreamRequest request;
        request.uid = m_uid;
        request.account = kLinkAccount;
        SrtSocket socket = sockets(SocketUse::Control);
        if (socket.isOpen())
            m_probe.emplace(m_epoll, std::move(socket),
                            CallerSocket::Settings{request, {}, m_configured});
        else
            m_probeResult = LINK_ER_NETWORK;
    }

    const std::string m_uid;
    LanQuery m_lan;
    SrtEpoll m_epoll;
    sockaddr_in m_configured{};
    std::optional<CallerSocket> m_probe;
    int m_probeResult = 0;  // negative once the configured host has refused or cannot be asked
};

}  // namespace

int findCamera(const std::string& uid, ClientSession& session, const CallerSocketFactory& sockets) {
    const uint32_t interruptions = session.interruptions();
    const int64_t startMs = steadyMilliseconds();
    CameraFinder finder(uid, sockets);
    while (!finder.isOver(steadyMilliseconds() - startMs)) {
        if (session.isAborted() || session.interruptions() != interruptions)
            return LINK_ER_ABORTED;
        if (const auto address = finder.step()) {
            session.bind(uid, *address);
            return 0;
        }
    }
    return finder.failure();
}

}  // namespace orvelle
