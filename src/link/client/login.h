#pragma once

#include "link/client/camera_finder.h"
#include "link/client/channel.h"

namespace orvelle {

/// Outcome of a login: the channel, or why there is none.
struct LoginResult {
    int code = 0;
    std::shared_ptr<ClientChannel> channel;
};

/// Logs in on a channel of a bound session: derives the passphrase, connects the sockets, says
/// HELLO and waits for WELCOME, all on the calling thread. `timeoutMs` 0 waits without bound;
/// abort() and interrupt() of the session end it within a slice of 10 ms.
LoginResult logIn(const std::shared_ptr<ClientSession>& session, const std::string& account,
                  const std::string& password, int channelNumber, int64_t timeoutMs,
                  const CallerSocketFactory& sockets);

}  // namespace orvelle
