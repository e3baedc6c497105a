#include "ui/dialogs/app_cancel_dialog.h"

#include "core/log.h"
#include "device/device_manager.h"
#include "ui/widgets/text.h"

using orvelle::kLogInfo;
using orvelle::log;

KvAppCancelThread::KvAppCancelThread(KvAppCancelDialog* dialog)
    : KvThread(QStringLiteral("app-cancel")), m_dialog(dialog) {}

void KvAppCancelThread::run() {
    log("app thread start\n", kLogInfo);
    if (KvDeviceManager* manager = KvDeviceManager::instance()) {
        manager->closeForGood();
        manager->finishWrites();
    }
    emit m_dialog->_appCancelThreadEndedSignal();
    log("app thread ended\n", kLogInfo);
}

KvAppCancelDialog::KvAppCancelDialog(QWidget* parent)
    : BusyDialog(orvelle::text("exiting_the_application"), parent), m_thread(this) {
    connect(this, &KvAppCancelDialog::_appCancelThreadEndedSignal, this,
            &KvAppCancelDialog::_onAppCancelThreadEnded);
}

KvAppCancelDialog::~KvAppCancelDialog() {
    m_thread.waitForEnd();
}

int KvAppCancelDialog::start(int leftInset) {
    m_thread.start(QThread::InheritPriority);
    if (!m_thread.isRunning()) {
        log("app cancel thread ended aredly\n", kLogInfo);
        return 1;
    }
    return execCentred(leftInset);
}

void KvAppCancelDialog::_onAppCancelThreadEnded() {
    accept();
}
