#pragma once

#include "core/thread.h"
#include "link/client/channel.h"
#include "link/transport/closing_sockets.h"

#include <map>

namespace orvelle {

/// The one thread ("link-client") that reads the sockets of all sessions, pings every camera once
/// a second and ends sessions whose camera fell silent or said goodbye.
///
/// Owner: LinkClient. It sleeps on a condition while no socket is open.
class ClientReceiver : public KvThread {
public:
    ClientReceiver();

    void run() override;
    void stop() override;

    /// Reads the sockets of a channel that has just logged in. Any thread.
    void add(const std::shared_ptr<ClientChannel>& channel);
    /// Reads them no more, says goodbye on them and ends the readers with `reason`. Any thread;
    /// returns at once.
    void closeOrderly(ClientChannel& channel, int reason);

private:
    struct Reading {
        std::shared_ptr<ClientChannel> channel;
        std::shared_ptr<SealedSocket> socket;
    };

    void waitForWork();
    void drain(SRTSOCKET socket);
    bool readOne(const Reading& reading);
    /// Ends a channel, and with channel 0 the whole session.
    void endChannel(ClientChannel& channel, int reason);
    void forget(ClientChannel& channel);
    void tick(int64_t nowMs);

    SrtEpoll m_epoll;
    ClosingSockets m_closing;

    std::mutex m_mutex;  ///< guards m_readings
    std::condition_variable m_workCame;
    std::map<SRTSOCKET, Reading> m_readings;
};

}  // namespace orvelle
