#pragma once

#include <QString>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "device/request_queue.h"
#include "device/response_listeners.h"
#include "device/tutk_request.h"

class KvThread;

namespace orvelle {

/// The commands and responses of one camera while its session is open: a queue that one loop
/// drains into the AV channel, and another loop that hands what comes to the listeners.
///
/// Opened and closed by one thread at a time; the rest may be used from any thread. Who listens
/// stays from one session to the next.
class CommandChannel {
public:
    using ListenerCallback = ResponseListeners::Callback;

    CommandChannel();
    ~CommandChannel();  ///< closes
    CommandChannel(const CommandChannel&) = delete;
    CommandChannel& operator=(const CommandChannel&) = delete;

    /// How a session's loops are run.
    struct Setup {
        QString uid;  ///< for the log
        int avIndex = -1;
        int keepAliveMs = 30000;  ///< from one keep-alive to the next
        /// Called by the first loop that ends by itself, on its thread, with the link's result.
        std::function<void(int result)> broke;
    };

    /// Starts both loops; the first command asks for the camera's type.
    void open(Setup setup);
    /// Asks the loops to end, without waiting. What waits is dropped.
    void stop();
    /// The same and waits for their end.
    void close();
    /// Whether both loops run.
    bool isOpen() const { return m_sendRunning && m_recvRunning; }

    /// Queues a command and returns at once; false when no session is open or too many wait.
    bool send(uint32_t type, const void* data, int size);
    /// The same with eight zero bytes.
    bool send(uint32_t type);

    /// `callback` runs on the receive thread for every response, which lives for the call only.
    void addListener(void* object, ListenerCallback callback);
    /// Once it returned, the listener is not running and is not called again. Waits for a
    /// running callback unless called from it.
    void removeListener(void* object);

    /// The loops, on the threads of command_threads.h.
    void doSend(const KvThread& thread);
    void doRecv(const KvThread& thread);

private:
    void loopEnded(int result);
    int sendNow(const KvTUTKRequest& request) const;
    void receive(KvTUTKResponse response);

    Setup m_setup;  ///< fixed while the loops run
    std::atomic<int> m_avIndex{-1};
    std::atomic<bool> m_sendRunning{false};
    std::atomic<bool> m_recvRunning{false};

    // Owned by whoever opens and closes.
    std::unique_ptr<KvThread> m_sendThread;
    std::unique_ptr<KvThread> m_recvThread;

    RequestQueue m_requests;
    ResponseListeners m_listeners;
};

}  // namespace orvelle
