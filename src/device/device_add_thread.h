#pragma once

#include <QString>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include "core/thread.h"
#include "device/device.h"
#include "device/init_thread_pause.h"

class KvDeviceGroup;
class KvTUTKDevice;

/// Proves a device code by connecting to its camera and binds that camera.
///
/// The worker does the session and the files; the list changes on the interface thread, which
/// owns this object, just before updateDeviceStatusSignal(). Whoever loses interest gives it to
/// the manager's reaper: a camera that was connected by then joins the list all the same.
class KvTUTKDeviceTryConnectThread : public KvThread {
    Q_OBJECT
public:
    enum Status {
        kAdded = 0,
        kExists = 1,
        kFull = 2,       ///< as many cameras are bound as the link can hold
        kFailed = -1,    ///< no usable code, cancelled, or no connection
        kNotSaved = -2,  ///< connected, but its files could not be written
    };

    explicit KvTUTKDeviceTryConnectThread(const QString& code);
    ~KvTUTKDeviceTryConnectThread() override;  ///< waits for a running attempt to be aborted

    void run() override;
    /// Aborts the attempt as well; see KvDevice::cancelInit().
    void stop() override;

    /// Why the camera could not be reached; kNeverTried where none was asked.
    orvelle::DeviceState failure() const { return m_failure; }

    /// The name that a camera gets: "camera" and the last four characters of its code.
    static QString nameFor(const QString& code);

signals:
    /// Once, on the interface thread; a Status.
    void updateDeviceStatusSignal(int status);

private slots:
    void _doFinish();

private:
    Status attempt();
    Status connectDevice();
    bool store();

    const QString m_code;
    std::atomic<orvelle::DeviceState> m_failure{orvelle::DeviceState::kNeverTried};

    std::mutex m_deviceMutex;  ///< guards the pointer m_device, not the device
    std::unique_ptr<KvTUTKDevice> m_device;

    // Owned by the worker, and by the interface thread once that has ended.
    std::unique_ptr<KvDeviceGroup> m_entry;
    std::optional<orvelle::InitThreadPause> m_pause;
    Status m_status = kFailed;

    bool m_isFinished = false;  ///< owned by the interface thread
};
