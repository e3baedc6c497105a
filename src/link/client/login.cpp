#include "link/client/login.h"

#include "link/client/caller_socket.h"
#include "link/clock.h"
#include "link/environment.h"
#include "link/passphrase.h"
#include "link/result_codes.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr int kSliceMs = 10;
constexpr int kMaxSockets = 2;

// The sockets of one login, all under way at once.
class Login {
public:
    void start(SrtSocket socket, const CallerSocket::Settings& settings) {
        m_callers.emplace_back(m_epoll, std::move(socket), settings);
    }

    // One slice; whether the outcome is known.
    bool step() {
        SRT_EPOLL_EVENT events[kMaxSockets];
        const int count = srt_epoll_uwait(m_epoll.id(), events, kMaxSockets, kSliceMs);
        for (int i = 0; i < std::min(count, kMaxSockets); ++i) {
            for (CallerSocket& caller : m_callers) {
                if (caller.id() == events[i].fd)
                    caller.advance();
            }
        }
        const auto isPending = [](const CallerSocket& caller) { return caller.isPending(); };
        return failure() != 0 || std::none_of(m_callers.begin(), m_callers.end(), isPending);
    }

    int failure() const {
        for (const CallerSocket& caller : m_callers) {
            if (!caller.isPending() && caller.result() != 0)
                return caller.result();
        }
        return 0;
    }

    // In the order of start().
    SrtSocket takeLast() {
        SrtSocket socket = m_callers.back().take();
        m_callers.pop_back();
        return socket;
    }

private:
    SrtEpoll m_epoll;
    std::vector<CallerSocket> m_callers;
};

int waitForOutcome(Login& login, ClientSession& session, int64_t timeoutMs) {
    const uint32_t interruptions = session.interruptions();
    const int64_t startMs = steadyMilliseconds();
    while (!login.step()) {
        if (session.isAborted() || session.interruptions() != interruptions)
            return LINK_ER_ABORTED;
        if (timeoutMs > 0 && !isLinkUnbounded() && steadyMilliseconds() - startMs >= timeoutMs)
            return AV_ER_TIMEOUT;
    }
    return login.failure();
}

}  // namespace

LoginResult logIn(const std::shared_ptr<ClientSession>& session, const std::string& account,
                  const std::string& password, int channelNumber, int64_t timeoutMs,
                  const CallerSocketFactory& sockets) {
    if (session->isAborted())
        return {LINK_ER_ABORTED, {}};
    const auto passphrase = derivePassphrase(session->uid(), account, password);
    if (!passphrase)
        return {AV_ER_WRONG_VIEWACCorPWD, {}};

    CallerSocket::Settings settings;
    settings.passphrase = *passphrase;
    settings.address = session->address();
    settings.request.uid = session->uid();
    settings.request.account = account;
    settings.request.token = session->token();
    settings.request.channel = channelNumber;

    Login login;
    std::vector<StreamPurpose> purposes{StreamPurpose::Media};
    if (channelNumber == 0)
        purposes.insert(purposes.begin(), StreamPurpose::Control);
    for (const StreamPurpose purpose : purposes) {
        settings.request.purpose = purpose;
        SrtSocket socket =
            sockets(purpose == StreamPurpose::Control ? SocketUse::Control : SocketUse::Media);
        if (!socket.isOpen())
            return {LINK_ER_NETWORK, {}};
        login.start(std::move(socket), settings);
    }

    const int code = waitForOutcome(login, *session, timeoutMs);
    if (code != 0)
        return {code, {}};
    session->noteHeard(steadyMilliseconds());
    SrtSocket media = login.takeLast();
    SrtSocket control = channelNumber == 0 ? login.takeLast() : SrtSocket();
    return {0, std::make_shared<ClientChannel>(session, channelNumber, std::move(control),
                                               std::move(media))};
}

}  // namespace orvelle
