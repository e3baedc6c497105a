#pragma once

#include "link/client/login.h"
#include "link/client/receiver.h"

#include <map>
#include <memory>

namespace orvelle {

/// The client side of the link in this process: all sessions and channels, the shared local port
/// and the receive thread. iotc.h and av.h are thin wrappers around it. Any thread.
class LinkClient {
public:
    /// Built at first use; ended by shutDown() or at the end of the process.
    static LinkClient& instance();

    int start(uint16_t udpPort);
    int setMaxChannels(int maxChannels);
    /// Closes every session, ends the receive thread and the transport. It can be started anew.
    void shutDown();

    int openSession();
    std::shared_ptr<ClientSession> session(int sid) const;
    int find(const std::string& uid, int sid);
    void closeSession(int sid);

    int openChannel(int sid, const std::string& account, const std::string& password,
                    int channelNumber, int64_t timeoutMs);
    std::shared_ptr<ClientChannel> channel(int avIndex) const;
    void closeChannel(int avIndex);

private:
    LinkClient();
    ~LinkClient();

    std::shared_ptr<LocalPort> localPort();
    std::optional<sockaddr_in> lastCamera(const std::string& uid) const;
    void noteCamera(const ClientSession& session);
    int registerChannel(const std::shared_ptr<ClientChannel>& channel);
    void closeChannel(const std::shared_ptr<ClientChannel>& channel, int reason);

    mutable std::mutex m_mutex;  ///< guards the fields below
    std::unique_ptr<SrtLibrary> m_library;
    std::shared_ptr<ClientReceiver> m_receiver;
    uint16_t m_wishedPort = 0;
    std::weak_ptr<LocalPort> m_localPort;              ///< logins and channels keep it
    std::map<std::string, sockaddr_in> m_lastCameras;  ///< by UID: who proved the password last
    int m_maxChannels = 0;
    int m_nextSid = 0;
    int m_nextIndex = 0;
    std::map<int, std::shared_ptr<ClientSession>> m_sessions;
    std::map<int, std::shared_ptr<ClientChannel>> m_channels;
};

}  // namespace orvelle
