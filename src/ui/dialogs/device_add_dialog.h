#pragma once

#include <memory>

#include "device/device.h"
#include "ui/dialogs/busy_dialog.h"

class KvTUTKDeviceTryConnectThread;
class QPushButton;

namespace orvelle {
class WorkerReaper;
}

/// Waits while a camera is bound by its code, or is given the new password that the code holds;
/// exec() gives 1 with an outcome and 0 when the user cancelled, which Enter does not. Cancelling
/// returns at once: the reaper, which is borrowed, ends the attempt. Interface thread.
class KvTUTKDeviceAddDialog : public orvelle::BusyDialog {
    Q_OBJECT

public:
    enum Status {
        kNotFinished = -3,
        kNotSaved = -2,
        kFailed = -1,
        kAdded = 0,
        kCancelled = 1,
        kExists = 2,
        kFull = 3,     ///< no further camera can be bound
        kChanged = 4,  ///< bound before, with another password: the new one is stored
    };

    explicit KvTUTKDeviceAddDialog(orvelle::WorkerReaper& reaper, QWidget* parent = nullptr);
    ~KvTUTKDeviceAddDialog() override;

    /// Begins the attempt; exec() shows it.
    void start(const QString& code);
    int status() const { return m_status; }
    /// After kFailed: why; kNeverTried when no camera was asked.
    orvelle::DeviceState failure() const { return m_failure; }

    void reject() override;

signals:
    void updateDeviceStatusSignal(int status);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void _doUpdateDeviceStatus(int status);
    void _onClickCancelButton(bool);

private:
    orvelle::WorkerReaper& m_reaper;
    QPushButton* m_cancel;  ///< child
    int m_status = kNotFinished;
    orvelle::DeviceState m_failure = orvelle::DeviceState::kNeverTried;
    std::unique_ptr<KvTUTKDeviceTryConnectThread> m_thread;
};
