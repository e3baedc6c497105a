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
class KvDeviceManager;
class KvTUTKDevice;

/// Proves a device code by connecting to its camera and binds that camera, or, when it is bound
/// already and its password has changed, gives it the new one.
///
/// The worker does the session and the files; the list changes on the interface thread, which
/// owns this object, just before updateDeviceStatusSignal(). Whoever loses interest gives it to
/// the manager's reaper: a camera that was connected by then joins the list, or has its new
/// password, all the same.
class KvTUTKDeviceTryConnectThread : public KvThread {
    Q_OBJECT
public:
    enum Status {
        kAdded = 0,
        kExists = 1,     ///< with this very password; no camera was asked
        kFull = 2,       ///< as many cameras are bound as the link can hold
        kChanged = 3,    ///< bound before: the password proved right and replaces the stored one
        kFailed = -1,    ///< no usable code, cancelled, or no connection
        kNotSaved = -2,  ///< connected, but its files could not be written
    };

    /// How long a camera that refuses logins for now is asked again, in milliseconds.
    struct Patience {
        int pauseMs = 2000;
        int totalMs = 65'000;  ///< a camera makes an address wait for a minute at most
    };

    explicit KvTUTKDeviceTryConnectThread(const QString& code);
    ~KvTUTKDeviceTryConnectThread() override;  ///< waits for a running attempt to be aborted

    /// Before the start only.
    void setPatience(const Patience& patience) { m_patience = patience; }
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
    /// The camera refuses logins for now and is asked again. From the worker.
    void waitingSignal();

private slots:
    void _doFinish();

private:
    Status attempt();
    bool proveCode();
    Status bindDevice(KvDeviceManager& manager);
    bool store();
    void addToList(KvDeviceManager& manager);
    void changePassword(KvDeviceManager& manager);

    QString m_code;
    Patience m_patience;
    std::atomic<orvelle::DeviceState> m_failure{orvelle::DeviceState::kNeverTried};

    std::mutex m_deviceMutex;  ///< guards the pointer m_device, not the device
    std::unique_ptr<KvTUTKDevice> m_device;

    // Owned by the worker, and by the interface thread once that has ended.
    std::unique_ptr<KvDeviceGroup> m_entry;
    std::optional<orvelle::InitThreadPause> m_pause;
    Status m_status = kFailed;

    bool m_isFinished = false;  ///< owned by the interface thread
};
