#include "ui/dialogs/installer_start_dialog.h"

#include "ui/widgets/text.h"

namespace orvelle {

InstallerStartDialog::InstallerStartDialog(const QString& path, const InstallerProof& proof,
                                           QWidget* parent)
    : BusyDialog(text("the_update_is_being_checked"), parent),
      m_thread(path, proof, InstallerThread::Task::kCheckAndRun) {
    connect(&m_thread, &QThread::finished, this, &InstallerStartDialog::accept);
}

int InstallerStartDialog::exec() {
    m_thread.start();
    const int result = BusyDialog::exec();
    m_thread.waitForEnd();
    return result;
}

}  // namespace orvelle
