#pragma once

#include "link/client/session.h"

#include <functional>

namespace orvelle {

/// Gives sockets bound to the one local port that all callers share.
using CallerSocketFactory = std::function<SrtSocket(SocketUse)>;

/// Looks for the camera on its configured address and on the local network at once, on the
/// calling thread, and binds the session to the first that is found. Returns 0, LINK_ER_ABORTED,
/// LINK_ER_NOT_FOUND or LINK_ER_UNKNOWN_UID; a silent network costs about 2 s.
int findCamera(const std::string& uid, ClientSession& session, const CallerSocketFactory& sockets);

}  // namespace orvelle
