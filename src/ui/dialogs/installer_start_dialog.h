#pragma once

#include "ui/dialogs/busy_dialog.h"
#include "update/installer_thread.h"

namespace orvelle {

/// Says that a downloaded installer is being checked, until it was and runs or is refused. It waits
/// for the disk, so that the interface need not. Interface thread.
class InstallerStartDialog : public BusyDialog {
    Q_OBJECT

public:
    InstallerStartDialog(const QString& path, const InstallerProof& proof, QWidget* parent);

    int exec() override;

    /// After exec().
    InstallerThread::Outcome outcome() const { return m_thread.outcome(); }

private:
    InstallerThread m_thread;
};

}  // namespace orvelle
