#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

#include "core/thread.h"
#include "device/init_thread_pause.h"

class KvDevice;
class KvDeviceGroup;

/// Removes an entry of the camera list, and with a single camera's entry that camera: closes its
/// session and deletes its files.
///
/// The interface thread owns this object, takes both out of the list when the worker asks for
/// it, and deletes them when the worker has ended. It must not wait for it meanwhile without a
/// stop(), which leaves what still is in the list there.
class KvTUTKDeviceRemoveThread : public KvThread {
    Q_OBJECT
public:
    /// The entry is borrowed and must be listed.
    explicit KvTUTKDeviceRemoveThread(KvDeviceGroup* entry);
    ~KvTUTKDeviceRemoveThread() override;

    void run() override;
    void stop() override;

    /// False once a file stayed, so that the entry comes back at the next start. Any thread.
    bool areFilesGone() const { return m_areFilesGone; }

signals:
    /// Once, on the interface thread: the entry is gone.
    void endedSignal();

private slots:
    void _doFinish();
    void _doHandOver();

private:
    bool waitForHandOver();

    KvDeviceGroup* m_listed;  ///< owned by the interface thread; null once taken

    std::mutex m_handOverMutex;  ///< guards m_isHandedOver and what the two pointers own till then
    std::condition_variable m_handOverSignal;
    bool m_isHandedOver = false;
    std::unique_ptr<KvDeviceGroup> m_entry;
    std::unique_ptr<KvDevice> m_device;

    std::atomic<bool> m_areFilesGone{true};
    std::optional<orvelle::InitThreadPause> m_pause;  ///< worker's, then the interface thread's
    bool m_isFinished = false;                        ///< owned by the interface thread
};
