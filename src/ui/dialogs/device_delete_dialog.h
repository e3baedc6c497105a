#pragma once

#include "device/device_remove_thread.h"
#include "ui/dialogs/busy_dialog.h"

/// Removes an entry of the camera list; exec() gives 1 when it is gone. Whoever shows its cameras
/// has let go of them before. Interface thread.
class KvTUTKDeviceDeleteDialog : public orvelle::BusyDialog {
    Q_OBJECT

public:
    /// The entry is borrowed and dies.
    KvTUTKDeviceDeleteDialog(KvDeviceGroup* entry, QWidget* parent = nullptr);

    int exec() override;

    /// After exec(): false when the entry will be back after the next start.
    bool areFilesGone() const { return m_thread.areFilesGone(); }

signals:
    void _removeThreadEndedSignal();

private slots:
    void _onRemoveThreadEnded();

private:
    KvTUTKDeviceRemoveThread m_thread;
};
