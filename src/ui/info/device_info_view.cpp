#include "ui/info/device_info_view.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QPushButton>
#include <QtDebug>

#include "device/device_messages.h"
#include "device/tutk_device.h"
#include "ui/dialogs/alert_dialog.h"
#include "ui/info/device_info_view_ui.h"
#include "ui/widgets/text.h"

using orvelle::text;
using UI = KvTUTKDeviceInfoViewUI;

namespace {

constexpr int kTutkType = 1;
constexpr int kOnlineIntervalMs = 1000;
constexpr int kNoResult = -1;
constexpr int kQuestionBytes = 4;

/// A camera without a network card of its own says noughts.
bool isNoAddress(QString mac) {
    return mac.remove(QLatin1Char(':')).remove(QLatin1Char('0')).isEmpty();
}

}  // namespace

KvTUTKDeviceInfoView::KvTUTKDeviceInfoView(QWidget* parent) : QWidget(parent), m_ui(new UI(this)) {
    setFocusPolicy(Qt::StrongFocus);
    m_waitTimer.setSingleShot(true);
    m_onlineTimer.setInterval(kOnlineIntervalMs);
    using View = KvTUTKDeviceInfoView;
    connect(this, &View::updateDeviceInfo, this, &View::_onUpdateDeviceInfo);
    connect(this, &View::updateNetworkInfo, this, &View::_onUpdateNetworkInfo);
    connect(this, &View::updateSDCardCleanupViewSignal, this, &View::_doUpdateSDCardCleanupView);
    connect(&m_waitTimer, &QTimer::timeout, this, &View::_invokeWaitTimer);
    connect(&m_onlineTimer, &QTimer::timeout, this, &View::_invokeOnlineTimer);
    connect(m_ui->backButton(), &QPushButton::clicked, this, &View::_onClickUIBackButton);
    connect(m_ui->cleanupButton(), &QPushButton::clicked, this,
            &View::_onClickUISdcardCleanupButton);
    connect(m_ui->copyButton(), &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(m_ui->value(UI::kUid)); });
    connect(m_ui->unbindButton(), &QPushButton::clicked, this, &View::_onClickUIUnbindButton);
}

KvTUTKDeviceInfoView::~KvTUTKDeviceInfoView() {
    setDevice(nullptr);
}

void KvTUTKDeviceInfoView::setDevice(KvDevice* device) {
    if (m_tutkDevice)
        m_tutkDevice->removeListener(this);
    stopWaiting();
    m_onlineTimer.stop();
    ++m_round;
    m_device = device;
    m_tutkDevice =
        device && device->type() == kTutkType ? qobject_cast<KvTUTKDevice*>(device) : nullptr;
    m_totalSpace = 0;
    m_ui->clear();
    if (!device)
        return;
    m_ui->setValue(UI::kCameraName, device->displayName());
    m_ui->setValue(UI::kUid, device->uid());
    m_isOnline = device->isOnline();
    if (m_tutkDevice)
        m_tutkDevice->addListener(this, onResponse);
    m_onlineTimer.start();
    ask();
}

void KvTUTKDeviceInfoView::ask() {
    m_ui->setNotice(QString());
    bool isSent = false;
    for (const IoType type : {IOTYPE_USER_IPCAM_GETWIFI_REQ, IOTYPE_USER_IPCAM_DEVINFO_REQ})
        isSent = send(type, QByteArray(kQuestionBytes, '\0'));
    if (isSent)
        waitFor(Waiting::kForAnswer);
    else
        m_ui->setNotice(text("camera_offline"));
}

bool KvTUTKDeviceInfoView::send(uint32_t type, const QByteArray& payload) {
    return m_tutkDevice && m_tutkDevice->sendIOCtrl(type, payload.constData(), payload.size());
}

void KvTUTKDeviceInfoView::waitFor(Waiting what) {
    m_waiting = what;
    const bool isCleanup = what == Waiting::kForCleanup;
    m_ui->showLoading(isCleanup ? QStringLiteral("%1...").arg(text("cleaning_up"))
                                : text("loading"));
    m_waitTimer.start(isCleanup ? m_timeouts.cleanupMs : m_timeouts.answerMs);
}

void KvTUTKDeviceInfoView::stopWaiting() {
    m_waiting = Waiting::kNo;
    m_waitTimer.stop();
    m_ui->hideLoading();
}

void KvTUTKDeviceInfoView::onResponse(void* user, KvTUTKResponse* response) {
    static_cast<KvTUTKDeviceInfoView*>(user)->handleResponse(*response);
}

// On the receive thread: hands over by the signals, which are queued from there.
void KvTUTKDeviceInfoView::handleResponse(const KvTUTKResponse& response) {
    using namespace orvelle;
    switch (response.type()) {
        case IOTYPE_USER_IPCAM_GETWIFI_RESP: {
            const auto wifi = SMsgAVIoctrlGetWifiResp_vbk::decode(response.data());
            qDebug("SMsgAVIoctrlGetWifiResp_vbk ssid = %s, ip = %s, mac = %s",
                   qUtf8Printable(wifi.ssid), qUtf8Printable(wifi.ip), qUtf8Printable(wifi.mac));
            emit updateNetworkInfo(m_round, wifi.ssid, wifi.ip, wifi.mac);
            break;
        }
        case IOTYPE_USER_IPCAM_DEVINFO_RESP: {
            const auto info = SMsgAVIoctrlDeviceInfoResp::decode(response.data());
            const int freeSpace = static_cast<int>(info.freeMiB.value_or(0));
            const int totalSpace = static_cast<int>(info.totalMiB.value_or(0));
            qDebug("SMsgAVIoctrlDeviceInfoResp model = %s, free = %d, total = %d, version = %d",
                   qUtf8Printable(info.model), freeSpace, totalSpace,
                   static_cast<int>(info.version.value_or(0)));
            emit updateDeviceInfo(m_round, info.model,
                                  info.version ? formatVersion(*info.version) : QString(),
                                  freeSpace, totalSpace);
            break;
        }
        case IOTYPE_USER_IPCAM_FORMATEXTSTORAGE_RESP: {
            const auto reply = SMsgAVIoctrlFormatExtStorageResp::decode(response.data());
            const int result = reply.result ? *reply.result : kNoResult;
            qDebug("SMsgAVIoctrlFormatExtStorageResp result = %d", result);
            emit updateSDCardCleanupViewSignal(m_round, result);
            break;
        }
        default:
            break;
    }
}

void KvTUTKDeviceInfoView::_onUpdateNetworkInfo(int round, const QString& ssid, const QString& ip,
                                                const QString& mac) {
    if (round != m_round)
        return;
    m_ui->setValue(UI::kNetworkName, ssid);
    m_ui->setValue(UI::kIpAddress, ip);
    m_ui->setValue(UI::kMacAddress, isNoAddress(mac) ? QString() : mac);
    answered();
}

void KvTUTKDeviceInfoView::_onUpdateDeviceInfo(int round, const QString& model,
                                               const QString& version, int freeSpace,
                                               int totalSpace) {
    if (round != m_round)
        return;
    m_totalSpace = totalSpace;
    m_ui->setValue(UI::kDeviceType, model);
    m_ui->setValue(UI::kFirmwareVersion, version);
    m_ui->setValue(UI::kFreeSpace, formatSmallSpace(freeSpace));
    m_ui->setValue(UI::kTotalSpace, formatSmallSpace(totalSpace));
    m_ui->setCleanupEnabled(totalSpace > 0);
    answered();
}

void KvTUTKDeviceInfoView::answered() {
    m_ui->setNotice(QString());
    // A late answer says nothing about the card that is being formatted.
    if (m_waiting == Waiting::kForAnswer)
        stopWaiting();
}

void KvTUTKDeviceInfoView::_invokeWaitTimer() {
    const bool wasCleanup = m_waiting == Waiting::kForCleanup;
    stopWaiting();
    m_ui->setNotice(text("the_camera_does_not_answer"));
    if (wasCleanup)
        tell(text("the_camera_does_not_answer"));
}

void KvTUTKDeviceInfoView::_invokeOnlineTimer() {
    if (m_device->isOnline() == m_isOnline)
        return;
    m_isOnline = !m_isOnline;
    stopWaiting();
    if (m_isOnline) {
        ask();
    } else {
        m_ui->setCleanupEnabled(false);
        m_ui->setNotice(text("camera_offline"));
    }
}

void KvTUTKDeviceInfoView::_onClickUISdcardCleanupButton(bool) {
    if (m_totalSpace <= 0 || m_waiting != Waiting::kNo)
        return;
    if (!agreed(text("format_the_card_with_all_its_recordings"), text("format")))
        return;
    if (send(IOTYPE_USER_IPCAM_FORMATEXTSTORAGE_REQ, orvelle::FormatStorageRequest().encode()))
        waitFor(Waiting::kForCleanup);
    else
        m_ui->setNotice(text("camera_offline"));
}

void KvTUTKDeviceInfoView::_doUpdateSDCardCleanupView(int round, int result) {
    if (round != m_round || m_waiting != Waiting::kForCleanup)
        return;
    stopWaiting();
    if (result == 0)
        ask();
    tell(result == 0 ? text("sdcard_cleanup_success") : text("sdcard_cleanup_failed"));
}

void KvTUTKDeviceInfoView::_onClickUIUnbindButton(bool) {
    KvDevice* const device = m_device;
    if (!device)
        return;
    QString question =
        text("it_will_automatically_delete_all_local_information_after_the_camera_is_unlinked");
    const QString warning = m_unbindWarning ? m_unbindWarning() : QString();
    if (!warning.isEmpty())
        question += QLatin1Char('\n') + warning;
    if (agreed(question, text("unbind")))
        emit unbindDevice(device);
}

void KvTUTKDeviceInfoView::_onClickUIVersionUpgradesButton(bool) {}

void KvTUTKDeviceInfoView::_onClickUIBackButton(bool) {
    emit clickBackButton();
}

/// False as well when the camera, or the page, went away meanwhile.
bool KvTUTKDeviceInfoView::agreed(const QString& question, const QString& verb) {
    const QPointer<KvTUTKDeviceInfoView> self(this);
    const int round = m_round;
    KvAlertDialog alert(m_device->displayName() + QStringLiteral("\n\n") + question, window());
    alert.setIrrevocable(verb);
    return alert.execCentred(this) == QDialog::Accepted && self && round == m_round;
}

void KvTUTKDeviceInfoView::tell(const QString& news) {
    KvAlertDialog alert(news, window());
    alert.setCancelVisible(false);
    alert.execCentred(this);
}

QString KvTUTKDeviceInfoView::formatSpace(int megabytes) {
    return QStringLiteral("%1G").arg(qMax(0, megabytes) >> 10);
}

QString KvTUTKDeviceInfoView::formatSmallSpace(int megabytes) {
    const bool isSmall = megabytes > 0 && megabytes < 1024;
    return isSmall ? QStringLiteral("%1 (%2 MB)").arg(formatSpace(megabytes)).arg(megabytes)
                   : formatSpace(megabytes);
}

QString KvTUTKDeviceInfoView::formatVersion(uint32_t version) {
    return QStringLiteral("%1.%2.%3.%4")
        .arg(version >> 24)
        .arg(version >> 16 & 255U)
        .arg(version >> 8 & 255U)
        .arg(version & 255U);
}

void KvTUTKDeviceInfoView::resizeEvent(QResizeEvent*) {
    m_ui->setGeometry(rect());
}

void KvTUTKDeviceInfoView::keyPressEvent(QKeyEvent* event) {
    auto* button = qobject_cast<QPushButton*>(focusWidget());
    if (event->key() == Qt::Key_Escape)
        emit clickBackButton();
    else if (button && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        button->click();
    else
        QWidget::keyPressEvent(event);
}
