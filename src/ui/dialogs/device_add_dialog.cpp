#include "ui/dialogs/device_add_dialog.h"

#include <QKeyEvent>
#include <QPushButton>

#include "device/device_add_thread.h"
#include "device/device_manager.h"
#include "device/worker_reaper.h"
#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::textKey;
using Thread = KvTUTKDeviceTryConnectThread;

namespace {

constexpr QSize kCancelSize(120, 30);
constexpr int kCancelBottom = 50;

}  // namespace

KvTUTKDeviceAddDialog::KvTUTKDeviceAddDialog(orvelle::WorkerReaper& reaper, QWidget* parent)
    : BusyDialog(orvelle::text("adding_camera"), parent),
      m_reaper(reaper),
      m_cancel(new QPushButton(orvelle::text("cancel"), this)) {
    m_cancel->setStyleSheet(KvWidgetUtils::primaryButtonStyle());
    m_cancel->setCursor(Qt::PointingHandCursor);
    m_cancel->setAutoDefault(false);
    KvWidgetUtils::setFont(m_cancel, orvelle::palette::kFontPixels);
    connect(m_cancel, &QPushButton::clicked, this, &KvTUTKDeviceAddDialog::_onClickCancelButton);
    connect(this, &KvTUTKDeviceAddDialog::updateDeviceStatusSignal, this,
            &KvTUTKDeviceAddDialog::_doUpdateDeviceStatus);
}

KvTUTKDeviceAddDialog::~KvTUTKDeviceAddDialog() {
    m_reaper.take(std::move(m_thread), this);
}

void KvTUTKDeviceAddDialog::start(const QString& code) {
    m_reaper.take(std::move(m_thread), this);
    m_status = kNotFinished;
    const KvDeviceManager* manager = KvDeviceManager::instance();
    const bool isKnown =
        manager && manager->findDevice(orvelle::CameraRecord::fromDeviceCode(code).uid);
    setText(orvelle::text(isKnown ? textKey("checking_the_new_code") : textKey("adding_camera")));
    m_thread = std::make_unique<Thread>(code);
    connect(m_thread.get(), &Thread::waitingSignal, this,
            [this] { setText(orvelle::text("the_camera_makes_us_wait")); });
    connect(m_thread.get(), &Thread::updateDeviceStatusSignal, this,
            &KvTUTKDeviceAddDialog::updateDeviceStatusSignal);
    m_thread->start(QThread::InheritPriority);
}

void KvTUTKDeviceAddDialog::_doUpdateDeviceStatus(int status) {
    switch (status) {
        case Thread::kAdded:
            m_status = kAdded;
            break;
        case Thread::kExists:
            m_status = kExists;
            break;
        case Thread::kFull:
            m_status = kFull;
            break;
        case Thread::kChanged:
            m_status = kChanged;
            break;
        case Thread::kNotSaved:
            m_status = kNotSaved;
            break;
        default:
            m_status = kFailed;
            m_failure = m_thread->failure();
            break;
    }
    accept();
}

void KvTUTKDeviceAddDialog::_onClickCancelButton(bool) {
    reject();
}

void KvTUTKDeviceAddDialog::reject() {
    m_status = kCancelled;
    m_reaper.take(std::move(m_thread), this);
    QDialog::reject();
}

void KvTUTKDeviceAddDialog::keyPressEvent(QKeyEvent* event) {
    // One more Enter after the code is meant to go on, and not to cancel.
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        BusyDialog::keyPressEvent(event);
}

void KvTUTKDeviceAddDialog::resizeEvent(QResizeEvent* event) {
    BusyDialog::resizeEvent(event);
    m_cancel->setGeometry((width() - kCancelSize.width()) / 2, height() - kCancelBottom,
                          kCancelSize.width(), kCancelSize.height());
}
