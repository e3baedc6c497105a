#include "link/client/camera_search.h"

#include "link/clock.h"
#include "link/environment.h"
#include "link/link_log.h"
#include "link/result_codes.h"
#include "link/transport/srt_socket.h"

#include <algorithm>

namespace orvelle {

namespace {

constexpr int64_t kSearchMs = 2000;
// Time for the LAN to answer once the configured host has said that it cannot serve us.
constexpr int64_t kSearchAfterRefusalMs = 800;
// A camera of version 1 leaves a query to its port unanswered.
constexpr int64_t kVersionOneAfterMs = 600;
constexpr int kMaxCandidatesPerHost = 4;
constexpr int kMaxAnswersInARow = 256;

std::optional<sockaddr_in> configuredAddress(const std::string& uid) {
    const auto configured = configuredCameraAddress(uid);
    if (!configured)
        return std::nullopt;
    const auto address = ipv4Address(configured->host, configured->port);
    if (!address)
        qCWarning(lcLink, "camera address \"%s\" is not numeric", configured->host.c_str());
    return address;
}

}  // namespace

CameraSearch::CameraSearch(const std::string& uid)
    : m_uid(uid),
      m_configured(configuredAddress(uid)),
      m_lan(uid, m_configured),
      m_startMs(steadyMilliseconds()) {}

bool CameraSearch::step(int waitMs) {
    probeForVersionOne();
    const size_t before = m_candidates.size();
    for (int i = 0; i < kMaxAnswersInARow; ++i) {
        const auto answer = m_lan.next(i == 0 ? waitMs : 0);
        if (!answer)
            break;
        take(*answer);
    }
    return m_candidates.size() > before;
}

void CameraSearch::probeForVersionOne() {
    const bool isDue = m_configured && m_candidates.empty() && !m_isOtherCamera &&
                       steadyMilliseconds() - m_startMs >= kVersionOneAfterMs;
    if (!isDue || m_hasAskedForVersionOne)
        return;
    m_hasAskedForVersionOne = true;
    m_lan.probeForVersionOne(*m_configured);
}

void CameraSearch::take(const LanAnswer& answer) {
    if (answer.version != kProtocolVersion) {
        m_isOtherVersion = true;
        return;
    }
    if (answer.uid != m_uid) {
        m_isOtherCamera = true;
        return;
    }
    const auto count = [&](const auto& isLike) {
        return std::count_if(m_candidates.begin(), m_candidates.end(), isLike);
    };
    const bool isKnown =
        count([&](const auto& other) { return isSameAddress(other, answer.address); }) > 0;
    const bool isCrowd = count([&](const auto& other) {
                             return isSameHost(other, answer.address);
                         }) >= kMaxCandidatesPerHost;
    if (!isKnown && !isCrowd && m_candidates.size() < kMaxCandidates)
        m_candidates.push_back(answer.address);
}

bool CameraSearch::isOver() const {
    const int64_t elapsedMs = steadyMilliseconds() - m_startMs;
    if (m_candidates.empty() && (m_isOtherCamera || m_isOtherVersion))
        return elapsedMs >= kSearchAfterRefusalMs;
    return !isLinkUnbounded() && elapsedMs >= kSearchMs;
}

int CameraSearch::failure() const {
    if (m_isOtherVersion)
        return LINK_ER_VERSION;
    if (m_isOtherCamera)
        return LINK_ER_UNKNOWN_UID;
    return m_configured || m_lan.wasNetworkUp() ? LINK_ER_NOT_FOUND : LINK_ER_NETWORK;
}

}  // namespace orvelle
