#include "ui/preview/device_player_view.h"

#include <QHoverEvent>
#include <QKeyEvent>
#include <QPainter>

#include <chrono>

#include "core/file_utils.h"
#include "device/device_messages.h"
#include "device/tutk_device.h"
#include "media/live/device_player.h"
#include "render/video_surface.h"
#include "ui/list/device_state_text.h"
#include "ui/preview/device_record_view.h"
#include "ui/preview/folder_search.h"
#include "ui/preview/tile_recording.h"
#include "ui/preview/tutk_device_ptz_view.h"
#include "ui/widgets/focus_ring.h"
#include "ui/widgets/notice_bar.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::textKey;
using UI = KvDevicePlayerViewUI;

namespace {

constexpr int kCheckIntervalMs = 2000;
constexpr int kStallIntervalMs = 1000;
constexpr int kStallMs = 5000;
constexpr int kBarsMs = 3000;
constexpr int kTurnableType = 1;
constexpr int kNoticeBottom = 52;  // above the bar of buttons

}  // namespace

KvDevicePlayerView::KvDevicePlayerView(QWidget* parent)
    : QWidget(parent),
      m_ui(new UI(this)),
      m_folderSearch(new orvelle::FolderSearch(this)),
      m_recordNotice(new orvelle::NoticeBar(this, kNoticeBottom)),
      m_player(std::make_unique<KvDevicePlayer>()) {
    m_recording = new orvelle::TileRecording(*m_player, this);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_MouseTracking);
    // Reports the mouse over the children too, which take its moves.
    setAttribute(Qt::WA_Hover);
    m_player->setCallback(this, onPlayerEvent);
    m_checkTimer.setInterval(kCheckIntervalMs);
    m_stallTimer.setInterval(kStallIntervalMs);
    m_barsTimer.setInterval(kBarsMs);
    m_barsTimer.setSingleShot(true);
    m_clicker.setTarget(m_ui);
    connectSignals();
    connectButtons();
    connectRecording();
    setDevice(nullptr);
    setVolume(0.0);
}

KvDevicePlayerView::~KvDevicePlayerView() {
    if (m_tutkDevice)
        m_tutkDevice->removeListener(this);
    m_checkTimer.stop();
    closePlayer();
}

qint64 KvDevicePlayerView::nowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void KvDevicePlayerView::connectSignals() {
    using View = KvDevicePlayerView;
    connect(this, &View::startSignal, this, &View::_doStart);
    connect(this, &View::stopSignal, this, &View::_doStop);
    connect(this, &View::hideLoadingSignal, this, &View::_doHideLoading);
    connect(this, &View::startCheckSignal, this, &View::_doStartCheck);
    connect(this, &View::updateResolutionSignal, this, &View::_doUpdateVideoResolution);
    connect(this, &View::updateRecordTimeSignal, this, &View::_doUpdateRecordTime);
    connect(this, &View::updateDeviceTypeSignal, this, &View::_doUpdateDeviceType);
    connect(this, &View::updateSpeedLabelSignal, this, &View::_doUpdateSpeedLabel);
    connect(&m_checkTimer, &QTimer::timeout, this, &View::_invokeCheckPlayer);
    connect(&m_stallTimer, &QTimer::timeout, this, &View::_invokeStallTimer);
    connect(&m_barsTimer, &QTimer::timeout, this, &View::_invokeMouseTimer);
    connect(&m_clicker, &KvClicker::doubleClick, this, &View::_onDoubleClickVideoView);
}

void KvDevicePlayerView::connectButtons() {
    using View = KvDevicePlayerView;
    const auto link = [this](UI::Button button, void (View::*slot)(bool)) {
        connect(m_ui->button(button), &QPushButton::clicked, this, slot);
    };
    link(UI::kSdCard, &View::_onClickUISdcardButton);
    link(UI::kClose, &View::_onClickUICloseButton);
    link(UI::kPlay, &View::_onClickUIPlayButton);
    link(UI::kRecord, &View::_onClickUIRecordButton);
    link(UI::kCapture, &View::_onClickUICaptureButton);
    link(UI::kPtz, &View::_onClickUIPtzButton);
    link(UI::kQuality, &View::_onClickUIHdButton);
    link(UI::kSound, &View::_onClickUIVolumeButton);
    link(UI::kSettings, &View::_onClickUISettingsButton);
    link(UI::kFullscreen, &View::_onClickUIFullscreenButton);
    connect(m_ui->codeButton(), &QPushButton::clicked, this,
            [this] { emit clickCodeButton(this); });
    const KvDeviceRecordView* record = m_ui->recordView();
    connect(record->cancelButton(), &QPushButton::clicked, this, &View::_onClickCancelRecordButton);
    connect(record->saveButton(), &QPushButton::clicked, this, &View::_onClickSaveRecordButton);
}

void KvDevicePlayerView::connectRecording() {
    using Recording = orvelle::TileRecording;
    using View = KvDevicePlayerView;
    connect(m_folderSearch, &orvelle::FolderSearch::found, this, &View::startRecord);
    connect(m_recording, &Recording::stateChanged, this, &View::updateRecordControls);
    connect(m_recording, &Recording::secondsChanged, this, &View::updateRecordTimeSignal);
    connect(this, &View::hideRecordView, this, &View::_doHideRecordView);
    connect(m_recording, &Recording::saved, this, &View::tellSaved);
    connect(m_recording, &Recording::nothingSaved, this,
            [this] { m_toast.show(this, orvelle::text("recording_too_short")); });
}

void KvDevicePlayerView::setDevice(KvDevice* device) {
    if (m_tutkDevice)
        m_tutkDevice->removeListener(this);
    stopPlay();
    m_recordNotice->dismiss();
    resetControls();
    m_device = device;
    m_tutkDevice = qobject_cast<KvTUTKDevice*>(device);
    m_version = 0;
    m_deviceType = m_tutkDevice ? m_tutkDevice->mode() : 0;
    if (m_tutkDevice) {
        m_tutkDevice->addListener(this, onResponse);
        setVolume(m_noSound ? 0.0 : m_tutkDevice->volume());
    }
    if (device)
        m_player->setView(m_ui->videoView());
    m_player->setDevice(device);
    m_ui->ptzView()->setDevice(device);
    m_ui->setName(device ? device->displayName() : QString());
    _doUpdateDeviceType();
    updateState();
    if (!device)
        return;
    m_thumbnailPath = KvFileUtils::cachePath(device->uid()) + QStringLiteral("/thumb.jpg");
    emit startSignal();
}

void KvDevicePlayerView::updateName() {
    m_ui->setName(m_device ? m_device->displayName() : QString());
    updateState();
}

void KvDevicePlayerView::resetControls() {
    m_ui->ptzView()->setDevice(nullptr);
    m_ui->setButtonShown(UI::kQuality, false);
    showPlaying(true);
}

/// Asked again with every new start: a request may be lost, and a camera restarted.
void KvDevicePlayerView::requestCameraFacts() {
    if (!m_tutkDevice)
        return;
    for (const IoType type : {IOTYPE_USER_IPCAM_GET_DEVICE_TYPE_REQ, IOTYPE_USER_IPCAM_DEVINFO_REQ,
                              IOTYPE_USER_IPCAM_GETSTREAMCTRL_REQ})
        m_tutkDevice->sendIOCtrl(type);
}

void KvDevicePlayerView::stopPlay() {
    setFullscreen(false);
    _doStop();
    m_recording->forgetInterruption();
    m_isStarted = false;
    m_hasPicture = false;
    m_ui->blankPicture();
    updateState();
}

void KvDevicePlayerView::_doStop() {
    setPtzShown(false);
    m_checkTimer.stop();
    closePlayer();
    updateState();
}

void KvDevicePlayerView::requestStop() {
    m_player->requestStop();
}

void KvDevicePlayerView::closePlayer() {
    m_stallTimer.stop();
    m_recording->leave();
    m_player->shutdown();
    m_openFailed = false;
    m_firstPicture = false;
    m_isLoading = false;
    m_ui->setSpeedText({});
}

void KvDevicePlayerView::_doStart() {
    closePlayer();
    m_checkTimer.stop();
    if (!m_device)
        return;
    m_isStarted = true;
    if (!m_device->isOnline()) {
        waitForCamera();
        return;
    }
    requestCameraFacts();
    if (m_player->play() < 0) {
        waitForCamera();
        return;
    }
    qDebug("open > 0 showLoading");
    m_isLoading = true;
    m_lastPictureMs = nowMs();
    m_stallTimer.start();
    showPlaying(true);
    updateState();
}

void KvDevicePlayerView::waitForCamera() {
    m_checkTimer.start();
    updateState();
}

/// The connection ended: the last picture stays until the camera is back.
void KvDevicePlayerView::_doStartCheck() {
    if (!m_openFailed.exchange(false))
        return;
    interruptRecord();
    closePlayer();
    waitForCamera();
}

void KvDevicePlayerView::_invokeCheckPlayer() {
    qDebug("check play 2000ms");
    if (m_device && m_device->isOnline())
        emit startSignal();
    else
        updateState();
}

void KvDevicePlayerView::setMinimised(bool minimised) {
    if (m_isMinimised == minimised)
        return;
    m_isMinimised = minimised;
    m_player->setKeyPicturesOnly(minimised);
    m_lastPictureMs = nowMs();
}

void KvDevicePlayerView::_invokeStallTimer() {
    // Key pictures alone may be far apart.
    const uint64_t received = m_player->stats().videoFramesReceived;
    if (m_isMinimised && received != m_packetsSeen)
        m_lastPictureMs = nowMs();
    m_packetsSeen = received;
    if (m_ui->button(UI::kPlay)->state() != 0 || nowMs() - m_lastPictureMs < kStallMs)
        return;
    m_openFailed = true;
    _doStartCheck();
}

void KvDevicePlayerView::_doHideLoading() {
    if (!m_firstPicture.exchange(false))
        return;
    m_isLoading = false;
    m_hasPicture = true;
    updateState();
    resumeRecord();
}

/// The state's words, and what lies on the picture: a sign while something is awaited, or the
/// reason why there is none.
void KvDevicePlayerView::updateState() {
    const QString state = m_device ? orvelle::deviceStateText(*m_device) : QString();
    m_ui->setStateText(state);
    updateButtons();
    const bool isWaiting = m_checkTimer.isActive();
    const bool offersCode = isWaiting && m_device && orvelle::needsNewCode(*m_device);
    // Nothing comes back by itself, so the last picture must not look as if it did.
    if (offersCode && m_hasPicture) {
        m_hasPicture = false;
        m_ui->blankPicture();
    }
    if (m_isLoading || (isWaiting && m_hasPicture))
        m_ui->showCover(m_hasPicture ? orvelle::text("reconnecting") : orvelle::text("loading"));
    else
        m_ui->hideCover();
    // A camera can be online and still give no picture.
    const QString reason = m_device && m_device->isOnline() ? orvelle::text("reconnecting") : state;
    m_ui->showNotice(isWaiting && !m_hasPicture
                         ? m_device->displayName() + QLatin1Char('\n') + reason
                         : QString(),
                     offersCode);
}

/// What needs a picture waits for the first, so that the buttons do not come and go with every
/// attempt to reach a camera.
void KvDevicePlayerView::updateButtons() {
    const bool isPlaying = m_player->isRunning() && !m_isLoading;
    for (const UI::Button button : {UI::kSound, UI::kCapture, UI::kPtz})
        m_ui->setButtonEnabled(button, isPlaying);
    m_ui->setButtonEnabled(UI::kRecord, isPlaying || m_recording->isRunning());
    m_ui->setButtonEnabled(UI::kPlay, !m_isLoading && m_player->isInputRunning());
    m_ui->setButtonEnabled(UI::kSettings, m_device && m_device->isOnline());
}

QString KvDevicePlayerView::qualityImage(int quality, int version) {
    const auto flags = static_cast<unsigned>(version) >> 8 & 0xFF;
    const unsigned model = flags >> 6;
    qDebug("quality = %d, flags = %X", quality, flags);
    qDebug("quality = %d, flags = %X", quality, model);
    const bool isLow = quality > 2;
    switch (model) {
        case 0:
            return isLow ? QStringLiteral("hd_normal") : QStringLiteral("fhd_normal");
        case 1:
            return isLow ? QStringLiteral("vga_normal") : QStringLiteral("hd_normal");
        case 2:
            return isLow ? QStringLiteral("vga_normal") : QStringLiteral("fhd_normal");
        default:
            break;
    }
    if (quality == 1)
        return QStringLiteral("fhd_normal");
    return quality == 4 ? QStringLiteral("hd_normal") : QStringLiteral("vga_normal");
}

void KvDevicePlayerView::_doUpdateVideoResolution(int quality, int version) {
    m_ui->setQualityImage(qualityImage(quality, version));
    m_ui->setButtonShown(UI::kQuality, true);
}

void KvDevicePlayerView::_doUpdateDeviceType() {
    m_ui->setButtonShown(UI::kPtz, m_deviceType == kTurnableType);
}

void KvDevicePlayerView::_doUpdateSpeedLabel(int bytesPerSecond) {
    if (m_player->isRunning())
        m_ui->setSpeedText(QString::asprintf("%.0lfKB/s", qMax(0, bytesPerSecond) / 1024.0));
}

void KvDevicePlayerView::setVolume(double volume) {
    if (volume != m_volume)
        qDebug("volume = %lf", volume);
    m_volume = volume;
    m_player->setVolume(volume);
    m_ui->button(UI::kSound)->setState(volume > 0.0 ? 0 : 1);
}

void KvDevicePlayerView::showPlaying(bool playing) {
    m_ui->button(UI::kPlay)->setState(playing ? 0 : 1);
    KvWidgetUtils::setToolTip(m_ui->button(UI::kPlay),
                              playing ? textKey("pause") : textKey("play"));
}

void KvDevicePlayerView::setFullscreen(bool fullscreen) {
    m_ui->button(UI::kFullscreen)->setState(fullscreen ? 1 : 0);
    KvWidgetUtils::setToolTip(m_ui->button(UI::kFullscreen),
                              fullscreen ? textKey("minimized") : textKey("maximized"));
}

void KvDevicePlayerView::setPtzShown(bool shown) {
    QWidget* pad = m_ui->ptzView();
    m_ui->button(UI::kPtz)->setState(shown ? 1 : 0);
    // Else the toolkit hands the focus to the next widget, wherever that is.
    if (!shown && window()->focusWidget() == pad)
        setFocus(Qt::OtherFocusReason);
    pad->setFocusPolicy(shown ? Qt::StrongFocus : Qt::NoFocus);
    pad->setVisible(shown);
    if (shown)
        pad->setFocus(Qt::OtherFocusReason);
}

bool KvDevicePlayerView::inVideoArea(int x, int y) const {
    return m_ui->geometry().contains(QPoint(x, y) - pos());
}

void KvDevicePlayerView::paintThumb(QPainter* painter, const QRect& rect) const {
    painter->fillRect(rect, Qt::black);
    if (!m_hasPicture)
        return;
    // Read back from the screen, since encoding a picture would hold up the drag.
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(rect, m_ui->videoView()->grabView());
}

bool KvDevicePlayerView::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::HoverEnter:
        case QEvent::HoverMove:
            wakeBars();
            break;
        case QEvent::HoverLeave:
            _invokeMouseTimer();
            break;
        case QEvent::FocusIn: {
            const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
            // The bars' buttons come next, and what is hidden gets no focus.
            if (reason != Qt::MouseFocusReason && orvelle::FocusRing::isKeyboardInUse())
                wakeBars();
            break;
        }
        default:
            break;
    }
    return QWidget::event(event);
}

void KvDevicePlayerView::wakeBars() {
    if (!m_device)
        return;
    m_ui->setBarsVisible(true);
    m_barsTimer.start();
}

void KvDevicePlayerView::_invokeMouseTimer() {
    if (m_device && (m_ui->hasFocusInBars() || m_ui->isMouseInBars())) {
        m_barsTimer.start();
        return;
    }
    m_barsTimer.stop();
    m_ui->setBarsVisible(false);
}

/// The bars may have left since the focus came.
bool KvDevicePlayerView::focusNextPrevChild(bool next) {
    if (orvelle::FocusRing::isKeyboardInUse())
        wakeBars();
    return QWidget::focusNextPrevChild(next);
}

void KvDevicePlayerView::resizeEvent(QResizeEvent*) {
    m_ui->setGeometry(rect());
}

void KvDevicePlayerView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && window()->isFullScreen())
        _onClickUIFullscreenButton(false);
    else if (event->key() == Qt::Key_Escape && m_ui->ptzView()->hasFocus())
        setPtzShown(false);
    else
        QWidget::keyPressEvent(event);
}
