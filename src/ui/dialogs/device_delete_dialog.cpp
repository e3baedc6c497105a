#include "ui/dialogs/device_delete_dialog.h"

#include "device/device_group.h"
#include "ui/widgets/text.h"

KvTUTKDeviceDeleteDialog::KvTUTKDeviceDeleteDialog(KvDeviceGroup* entry, QWidget* parent)
    : BusyDialog(entry->type() == KvDeviceGroup::kGroup ? orvelle::text("remove_group")
                                                        : orvelle::text("remove_device"),
                 parent),
      m_thread(entry) {
    connect(&m_thread, &KvTUTKDeviceRemoveThread::endedSignal, this,
            &KvTUTKDeviceDeleteDialog::_removeThreadEndedSignal);
    connect(this, &KvTUTKDeviceDeleteDialog::_removeThreadEndedSignal, this,
            &KvTUTKDeviceDeleteDialog::_onRemoveThreadEnded);
}

int KvTUTKDeviceDeleteDialog::exec() {
    m_thread.start(QThread::InheritPriority);
    return BusyDialog::exec();
}

void KvTUTKDeviceDeleteDialog::_onRemoveThreadEnded() {
    accept();
}
