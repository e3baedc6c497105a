#pragma once

#include "link/transport/sealed_socket.h"

#include <memory>
#include <mutex>
#include <vector>

namespace orvelle {

/// Sockets on which a goodbye was said: each is closed once the peer has acknowledged it, at the
/// latest 300 ms later. Any thread may add, one thread collects.
class ClosingSockets {
public:
    /// Sends BYE with `reason` and takes the socket over.
    void sayGoodbye(std::shared_ptr<SealedSocket> socket, int reason);
    /// Closes those whose time has come; false when none is left.
    bool collect(int64_t nowMs);
    bool isEmpty() const;
    /// Blocks until all are closed: the end of the thread that collects.
    void finish();

private:
    struct Entry {
        std::shared_ptr<SealedSocket> socket;
        int64_t deadlineMs;
    };

    mutable std::mutex m_mutex;  ///< guards m_entries
    std::vector<Entry> m_entries;
};

}  // namespace orvelle
