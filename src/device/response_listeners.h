#pragma once

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "device/tutk_request.h"

namespace orvelle {

/// Who is told of a device's responses, in order of registration.
///
/// The table's lock is held while listeners are called: once remove() returned on another
/// thread, that listener is not running and is not called again. A listener may add and
/// remove on its own thread. It must not wait for a thread that does so.
class ResponseListeners {
public:
    using Callback = void (*)(void* object, KvTUTKResponse* response);

    /// Nothing changes when `object` is registered already.
    void add(void* object, Callback callback);
    void remove(void* object);
    void dispatch(KvTUTKResponse& response);

private:
    struct Entry {
        void* object;  ///< null: removed while listeners are being called
        Callback callback;
    };

    /// Empty when this thread holds the lock already, being in dispatch().
    std::unique_lock<std::mutex> lockUnlessDispatching();
    void compact();

    std::atomic<std::thread::id> m_dispatcher{};  ///< set by its own thread only
    std::mutex m_mutex;                           ///< guards m_entries, also during dispatch()
    std::vector<Entry> m_entries;
};

}  // namespace orvelle
