#pragma once

#include "link/client/local_port.h"
#include "link/client/login_exchange.h"
#include "link/client/session.h"

#include <list>

namespace orvelle {

/// Tries to log in with everybody who answers to a UID, side by side; the first who proves the
/// password is the camera, and what the others say does not count. One thread.
class CandidateRace {
public:
    /// All are borrowed. `lastCamera`: who proved the password the last time, and is tried first
    /// whoever else answers now.
    CandidateRace(const LoginIdentity& identity, ClientSession& session, LocalPort& port,
                  const std::optional<sockaddr_in>& lastCamera);

    /// Waits a slice of 10 ms at most; whether the outcome is known.
    bool step();
    /// 0 and the proof, or the result that says most about why nobody was let in.
    int result() const { return m_result; }
    const ClientSession::Proof& proof() const { return m_proof; }

private:
    void admitCandidates();
    void sendDue();
    void receive();
    void collect();
    void noteFailure(int result);
    bool isSomebodyPending() const;
    bool isOver() const;

    const LoginIdentity& m_identity;
    LocalPort& m_port;
    const std::optional<sockaddr_in> m_lastCamera;
    std::unique_ptr<CameraSearch> m_search;  ///< null once nobody else is awaited
    std::vector<sockaddr_in> m_candidates;
    size_t m_nextCandidate = 0;
    int64_t m_nextAdmissionMs = 0;
    DatagramSocket m_socket;
    std::list<LoginExchange> m_exchanges;
    int m_result = 0;
    bool m_isDone = false;
    ClientSession::Proof m_proof;
};

}  // namespace orvelle
