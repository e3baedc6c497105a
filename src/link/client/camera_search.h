#pragma once

#include "link/client/lan_query.h"

#include <optional>
#include <string>
#include <vector>

namespace orvelle {

/// The search for one camera: the configured address and the local network are asked, and everyone
/// who answers to the UID is a candidate until the login shows who has the password. It goes on
/// while candidates are tried. One thread at a time.
class CameraSearch {
public:
    explicit CameraSearch(const std::string& uid);

    /// Waits up to `waitMs` for an answer; whether a new candidate came.
    bool step(int waitMs);
    /// In the order of their answers, at most kMaxCandidates, few from one host.
    const std::vector<sockaddr_in>& candidates() const { return m_candidates; }
    /// Nobody else will answer in time.
    bool isOver() const;
    /// Why there is no candidate.
    int failure() const;

    static constexpr size_t kMaxCandidates = 64;

private:
    void probeForVersionOne();
    void take(const LanAnswer& answer);

    const std::string m_uid;
    const std::optional<sockaddr_in> m_configured;
    LanQuery m_lan;
    const int64_t m_startMs;
    std::vector<sockaddr_in> m_candidates;
    bool m_hasAskedForVersionOne = false;
    bool m_isOtherVersion = false;  ///< somebody answered in another version
    bool m_isOtherCamera = false;   ///< the configured host serves another UID
};

}  // namespace orvelle
