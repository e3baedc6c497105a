#include "link/client/login.h"

#include "link/client/caller_socket.h"
#include "link/client/candidate_race.h"
#include "link/clock.h"
#include "link/environment.h"
#include "link/result_codes.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr int kSliceMs = 10;
constexpr int kMaxSockets = 2;

// The sockets of one login, all under way at once.
class SocketsOpening {
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
        return result() != 0 || std::none_of(m_callers.begin(), m_callers.end(), isPending);
    }

    int result() const {
        for (const CallerSocket& caller : m_callers) {
            if (!caller.isPending() && caller.result() != 0)
                return caller.result();
        }
        return 0;
    }

    // In the order of start().
    std::shared_ptr<SealedSocket> takeLast() {
        auto socket = m_callers.back().take();
        m_callers.pop_back();
        return socket;
    }

private:
    SrtEpoll m_epoll;
    std::vector<CallerSocket> m_callers;
};

// Steps until the outcome is known, the session is aborted or the time has passed.
class Patience {
public:
    Patience(ClientSession& session, int64_t timeoutMs)
        : m_session(session),
          m_interruptions(session.interruptions()),
          m_endMs(timeoutMs > 0 && !isLinkUnbounded() ? steadyMilliseconds() + timeoutMs
                                                      : INT64_MAX) {}

    template <class Steps>
    int waitFor(Steps& steps) {
        while (!steps.step()) {
            if (m_session.isAborted() || m_session.interruptions() != m_interruptions)
                return LINK_ER_ABORTED;
            if (steadyMilliseconds() >= m_endMs)
                return AV_ER_TIMEOUT;
        }
        return steps.result();
    }

private:
    ClientSession& m_session;
    const uint32_t m_interruptions;
    const int64_t m_endMs;
};

}  // namespace

LoginResult logIn(const std::shared_ptr<ClientSession>& session, const std::string& account,
                  const std::string& password, int channelNumber, int64_t timeoutMs,
                  const std::shared_ptr<LocalPort>& port,
                  const std::optional<sockaddr_in>& lastCamera) {
    if (session->isAborted())
        return {LINK_ER_ABORTED, {}};
    Patience patience(*session, timeoutMs);
    if (channelNumber == 0) {
        const LoginIdentity identity(session->uid(), account, password);
        CandidateRace race(identity, *session, *port, lastCamera);
        if (const int code = patience.waitFor(race))
            return {code, {}};
        session->prove(race.proof());
    }
    const auto proof = session->proof();
    if (!proof)
        return {LINK_ER_CHANNEL_IN_USE, {}};

    CallerSocket::Settings settings;
    settings.channel = static_cast<uint8_t>(channelNumber);
    settings.address = proof->socketAddress;
    settings.token = proof->token;
    settings.secret = proof->secret;
    SocketsOpening opening;
    std::vector<SocketPurpose> purposes{SocketPurpose::Media};
    if (channelNumber == 0)
        purposes.insert(purposes.begin(), SocketPurpose::Control);
    for (const SocketPurpose purpose : purposes) {
        settings.purpose = purpose;
        SrtSocket socket = port->makeCaller(purpose == SocketPurpose::Control ? SocketUse::Control
                                                                              : SocketUse::Media);
        if (!socket.isOpen())
            return {LINK_ER_NETWORK, {}};
        opening.start(std::move(socket), settings);
    }

    if (const int code = patience.waitFor(opening))
        return {code, {}};
    session->noteHeard(steadyMilliseconds());
    auto media = opening.takeLast();
    auto control = channelNumber == 0 ? opening.takeLast() : nullptr;
    return {0, std::make_shared<ClientChannel>(session, channelNumber, port, std::move(control),
                                               std::move(media))};
}

}  // namespace orvelle
