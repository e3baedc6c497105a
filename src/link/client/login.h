#pragma once

#include "link/client/channel.h"
#include "link/client/local_port.h"

namespace orvelle {

/// Outcome of a login: the channel, or why there is none.
struct LoginResult {
    int code = 0;
    std::shared_ptr<ClientChannel> channel;
};

/// Logs in on a channel of a bound session, all on the calling thread. On channel 0 everybody who
/// answered to the UID is tried, eight at once and then one more every 50 ms, until one proves the
/// password; then, as for every other channel, its sockets are connected and opened. `timeoutMs` 0
/// waits without bound; abort() and interrupt() of the session end it within a slice of 10 ms.
/// `lastCamera`: who proved the password of this UID the last time.
LoginResult logIn(const std::shared_ptr<ClientSession>& session, const std::string& account,
                  const std::string& password, int channelNumber, int64_t timeoutMs,
                  const std::shared_ptr<LocalPort>& port,
                  const std::optional<sockaddr_in>& lastCamera);

}  // namespace orvelle
