#include "link/client/candidate_race.h"

#include "link/clock.h"
#include "link/result_codes.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr size_t kExchangesAtOnce = 8;
constexpr int64_t kNextAfterMs = 50;  // then another one, so that none who stalls stands in the way
constexpr int kMaxMessagesInARow = 64;
constexpr int kSliceMs = 10;

// What a failure tells the user about the camera, least first.
int weightOf(int result) {
    constexpr int kByWeight[] = {
        AV_ER_TIMEOUT,   LINK_ER_PROTOCOL,          LINK_ER_REFUSED,          LINK_ER_UNKNOWN_UID,
        LINK_ER_VERSION, LINK_ER_TOO_MANY_ATTEMPTS, AV_ER_WRONG_VIEWACCorPWD, AV_ER_NO_PERMISSION};
    const auto* found = std::find(std::begin(kByWeight), std::end(kByWeight), result);
    return found == std::end(kByWeight) ? -1 : static_cast<int>(found - std::begin(kByWeight));
}

}  // namespace

CandidateRace::CandidateRace(const LoginIdentity& identity, ClientSession& session, LocalPort& port,
                             const std::optional<sockaddr_in>& lastCamera)
    : m_identity(identity),
      m_port(port),
      m_lastCamera(lastCamera),
      m_search(session.takeSearch()),
      m_candidates(session.candidates()) {
    if (m_lastCamera)
        m_exchanges.emplace_back(m_identity, *m_lastCamera, m_port.way());
}

bool CandidateRace::step() {
    admitCandidates();
    sendDue();
    receive();
    collect();
    return isOver();
}

void CandidateRace::admitCandidates() {
    if (m_search) {
        m_search->step(0);
        m_candidates = m_search->candidates();
        if (m_search->isOver())
            m_search.reset();
    }
    const int64_t nowMs = steadyMilliseconds();
    while (m_nextCandidate < m_candidates.size() &&
           (m_exchanges.size() < kExchangesAtOnce || nowMs >= m_nextAdmissionMs)) {
        const sockaddr_in& camera = m_candidates[m_nextCandidate++];
        if (m_lastCamera && isSameAddress(*m_lastCamera, camera))
            continue;
        m_nextAdmissionMs = nowMs + kNextAfterMs;
        m_exchanges.emplace_back(m_identity, camera, m_port.way());
    }
}

void CandidateRace::sendDue() {
    const int64_t nowMs = steadyMilliseconds();
    for (LoginExchange& exchange : m_exchanges) {
        for (const LoginExchange::Outgoing& out : exchange.due(nowMs)) {
            // What cannot be sent is repeated soon.
            [[maybe_unused]] const bool isSent =
                out.isFromSocketPort
                    ? m_port.send(out.bytes, exchange.camera())
                    : m_socket.send(out.bytes.data(), out.bytes.size(), exchange.camera());
        }
    }
}

void CandidateRace::receive() {
    if (!m_socket.waitForDatagram(kSliceMs))
        return;
    uint8_t buffer[kMaxDatagramBytes];
    sockaddr_in from{};
    for (int i = 0; i < kMaxMessagesInARow; ++i) {
        const int size = m_socket.receive(buffer, sizeof buffer, from);
        if (size < 0)
            return;
        const auto message =
            decodeLogin(buffer, std::min(static_cast<size_t>(size), sizeof buffer));
        if (!message)
            continue;
        const uint64_t token = std::visit([](const auto& m) { return m.token; }, *message);
        for (LoginExchange& exchange : m_exchanges) {
            if (exchange.token() == token && isSameAddress(exchange.camera(), from))
                exchange.handle(*message, steadyMilliseconds());
        }
    }
}

void CandidateRace::collect() {
    for (auto it = m_exchanges.begin(); it != m_exchanges.end();) {
        if (it->isPending()) {
            ++it;
            continue;
        }
        if (it->result() == 0) {
            m_proof = {it->camera(), it->socketAddress(), it->token(), it->sessionSecret()};
            m_result = 0;
            m_isDone = true;
            return;
        }
        noteFailure(it->result());
        it = m_exchanges.erase(it);
    }
}

void CandidateRace::noteFailure(int result) {
    if (m_result == 0 || weightOf(result) > weightOf(m_result))
        m_result = result;
}

// One who has not answered, and did not answer to the search either, is not waited for.
bool CandidateRace::isSomebodyPending() const {
    return std::any_of(m_exchanges.begin(), m_exchanges.end(), [this](const auto& exchange) {
        return exchange.wasAnswered() ||
               std::any_of(m_candidates.begin(), m_candidates.end(), [&](const auto& candidate) {
                   return isSameAddress(candidate, exchange.camera());
               });
    });
}

// A refusal may come from somebody in the camera's place, so the search has its time first.
bool CandidateRace::isOver() const {
    return m_isDone ||
           (!isSomebodyPending() && m_nextCandidate == m_candidates.size() && !m_search);
}

}  // namespace orvelle
