#include "ui/preview/device_player_view.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QSlider>

#include <chrono>

#include "core/file_utils.h"
#include "device/device_manager.h"
#include "device/tutk_device.h"
#include "media/live/device_player.h"
#include "platform/private_file.h"
#include "render/video_surface.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/list/device_state_text.h"
#include "ui/logging.h"
#include "ui/preview/camera_facts.h"
#include "ui/preview/device_record_view.h"
#include "ui/preview/media_folder.h"
#include "ui/preview/preview_keys.h"
#include "ui/preview/record_control.h"
#include "ui/preview/tile_sound.h"
#include "ui/preview/tutk_device_ptz_view.h"
#include "ui/widgets/focus_ring.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/video_overlay.h"
#include "ui/widgets/zoom_control.h"

using orvelle::CameraFacts;
using orvelle::PreviewKey;
using orvelle::textKey;
using orvelle::TileRecording;
using orvelle::TileSound;
using UI = KvDevicePlayerViewUI;

namespace {

constexpr int kCheckIntervalMs = 2000;
constexpr int kStallIntervalMs = 1000;
constexpr int kStallMs = 5000;
constexpr int kRetryMs = 3000;
constexpr int kSpeedIntervalMs = 1000;
constexpr int kNoticeBottom = 52;  // above the bar of buttons

QString timeStampName() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
}

QString iconOf(const KvDevice& device) {
    using orvelle::DeviceState;
    switch (device.state()) {
        case DeviceState::kWrongPassword:
            return QStringLiteral("state_locked");
        case DeviceState::kNeverTried:
        case DeviceState::kConnecting:
        case DeviceState::kFull:
        case DeviceState::kRefusedForNow:
        case DeviceState::kNoFreeChannel:
            return QStringLiteral("state_busy");
        default:
            return device.isOnline() ? QStringLiteral("state_busy")
                                     : QStringLiteral("state_offline");
    }
}

/// The time alone where it is of this day.
QString sinceText(const char* key, const QDateTime& since, const char* format) {
    const bool isToday = since.date() == QDate::currentDate();
    const QString time = since.time().toString(QLatin1String(format));
    return orvelle::text(key).arg(
        isToday ? time : since.date().toString(Qt::ISODate) + QLatin1Char(' ') + time);
}

}  // namespace

KvDevicePlayerView::KvDevicePlayerView(QWidget* parent)
    : QWidget(parent),
      m_ui(new UI(this)),
      m_facts(new CameraFacts(this)),
      m_player(std::make_unique<KvDevicePlayer>()) {
    m_record = new orvelle::RecordControl(*m_player, this, kNoticeBottom);
    m_sound = new TileSound(*m_player, m_ui->button(UI::kSound), m_ui->volumeSlider());
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_MouseTracking);
    m_player->setCallback(this, onPlayerEvent);
    m_checkTimer.setInterval(kCheckIntervalMs);
    m_stallTimer.setInterval(kStallIntervalMs);
    m_retryTimer.setInterval(kRetryMs);
    m_retryTimer.setSingleShot(true);
    m_clicker.setTarget(m_ui);
    connectSignals();
    connectButtons();
    connectRecording();
    setDevice(nullptr);
}

KvDevicePlayerView::~KvDevicePlayerView() {
    m_facts->setDevice(nullptr);
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
    connect(&m_retryTimer, &QTimer::timeout, this, &View::followState);
    connect(m_facts, &CameraFacts::qualityChanged, this, &View::updateResolutionSignal);
    connect(m_facts, &CameraFacts::typeChanged, this, &View::updateDeviceTypeSignal);
    connect(m_sound, &TileSound::changed, this, &View::followButtons);
    connect(m_sound, &TileSound::onlyThisAsked, this, &View::listenOnlyHere);
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
    connect(m_ui->notice(), &orvelle::PictureNotice::actionClicked, this, &View::helpOut);
    const KvDeviceRecordView* record = m_ui->recordView();
    connect(record->cancelButton(), &QPushButton::clicked, this, &View::_onClickCancelRecordButton);
    connect(record->saveButton(), &QPushButton::clicked, this, &View::_onClickSaveRecordButton);
}

void KvDevicePlayerView::connectRecording() {
    using Record = orvelle::RecordControl;
    using View = KvDevicePlayerView;
    connect(m_record, &Record::changed, this, &View::followRecording);
    connect(m_record, &Record::secondsChanged, this, &View::updateRecordTimeSignal);
    connect(this, &View::hideRecordView, this, &View::_doHideRecordView);
}

void KvDevicePlayerView::setDevice(KvDevice* device) {
    m_facts->setDevice(nullptr);
    stopPlay();
    m_ui->ptzView()->setDevice(nullptr);
    m_ui->setButtonShown(UI::kQuality, false);
    m_device = device;
    m_record->setDevice(device);
    m_reason.clear();
    auto* tutkDevice = qobject_cast<KvTUTKDevice*>(device);
    m_facts->setDevice(tutkDevice);
    m_sound->setDevice(tutkDevice, m_noSound);
    if (device)
        m_player->setView(m_ui->videoView());
    m_player->setDevice(device);
    m_ui->ptzView()->setDevice(device);
    m_ui->setName(device ? device->displayName() : QString());
    m_ui->overlay().setEnabled(device != nullptr);
    _doUpdateDeviceType();
    followState();
    if (!device)
        return;
    m_thumbnailPath = KvFileUtils::cachePath(device->uid()) + QStringLiteral("/thumb.jpg");
    emit startSignal();
}

void KvDevicePlayerView::updateName() {
    m_ui->setName(m_device ? m_device->displayName() : QString());
    followState();
}

void KvDevicePlayerView::stopPlay() {
    setFullscreen(false);
    _doStop();
    m_record->forgetInterruption();
    m_hasPicture = false;
    m_ui->blankPicture();
    followState();
}

void KvDevicePlayerView::_doStop() {
    setPtzShown(false);
    closePlayer();
    enter(State::kIdle);
}

void KvDevicePlayerView::requestStop() {
    m_player->requestStop();
}

void KvDevicePlayerView::closePlayer() {
    m_stallTimer.stop();
    m_record->leave();
    m_player->shutdown();
    m_openFailed = false;
    m_firstPicture = false;
    m_ui->setSpeedText({});
}

/// What runs by the clock in each state; all else is shown by followState().
void KvDevicePlayerView::enter(State state) {
    m_state = state;
    if (state == State::kPaused)
        m_since = QDateTime::currentDateTime();
    const auto run = [](QTimer& timer, bool isRunning) {
        if (!isRunning)
            timer.stop();
        else if (!timer.isActive())
            timer.start();
    };
    run(m_checkTimer, state == State::kWaiting);
    run(m_stallTimer, state == State::kLoading || state == State::kPlaying);
    followState();
}

void KvDevicePlayerView::_doStart() {
    closePlayer();
    if (!m_device)
        return;
    if (!m_device->isOnline()) {
        enter(State::kWaiting);
        return;
    }
    m_facts->request();
    if (m_player->play() < 0) {
        enter(State::kWaiting);
        return;
    }
    qDebug("open > 0 showLoading");
    m_lastPictureMs = nowMs();
    enter(State::kLoading);
}

/// The connection ended: the last picture stays until the camera is back.
void KvDevicePlayerView::_doStartCheck() {
    if (!m_openFailed.exchange(false))
        return;
    m_record->interrupt();
    closePlayer();
    enter(State::kWaiting);
}

void KvDevicePlayerView::_invokeCheckPlayer() {
    qDebug("check play 2000ms");
    if (m_device && m_device->isOnline())
        emit startSignal();
    else
        followState();
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
    if (nowMs() - m_lastPictureMs < kStallMs)
        return;
    m_openFailed = true;
    _doStartCheck();
}

void KvDevicePlayerView::_doHideLoading() {
    if (!m_firstPicture.exchange(false))
        return;
    m_hasPicture = true;
    m_retryTimer.stop();
    enter(State::kPlaying);
    m_record->resume();
}

/// The state's words and signs, and what lies on the picture.
void KvDevicePlayerView::followState() {
    if (m_device)
        m_ui->setStateText(orvelle::deviceStateText(*m_device),
                           orvelle::deviceStateColour(*m_device));
    else
        m_ui->setStateText({}, {});
    const bool isPaused = m_state == State::kPaused;
    m_ui->button(UI::kPlay)->setState(isPaused ? 1 : 0);
    m_ui->setTip(UI::kPlay, isPaused ? textKey("play") : textKey("pause"), PreviewKey::kPause);
    followButtons();
    // Nothing comes back by itself, so the last picture must not look as if it did.
    if (m_state == State::kWaiting && m_hasPicture && orvelle::needsNewCode(*m_device)) {
        m_hasPicture = false;
        m_ui->blankPicture();
    }
    m_ui->zoom().setEnabled(m_hasPicture);
    showReason();
}

/// A sign while something is awaited; or why there is no picture, or none that moves.
void KvDevicePlayerView::showReason() {
    const bool isTrying = m_state == State::kWaiting && m_retryTimer.isActive();
    const bool isHeld = m_state == State::kWaiting && m_hasPicture;
    if (m_hasPicture && (isHeld || m_state == State::kLoading))
        m_ui->overlay().showCover(orvelle::text("reconnecting"));
    else if (isTrying || m_state == State::kLoading)
        m_ui->overlay().showCover(orvelle::text(isTrying ? textKey("connecting") : "loading"));
    else
        m_ui->overlay().hideCover();

    orvelle::PictureNotice::Content content;
    if (m_state == State::kPaused) {
        content = {QStringLiteral("state_paused"),
                   sinceText(textKey("paused_since"), m_since, "HH:mm:ss"),
                   orvelle::text("screenshot"), true};
    } else if (m_state == State::kWaiting && !m_hasPicture) {
        // A camera can be online and still give no picture.
        const QString reason = m_device->isOnline() ? orvelle::text("reconnecting")
                                                    : orvelle::deviceStateText(*m_device);
        if (reason != m_reason)
            m_since = QDateTime::currentDateTime();
        m_reason = reason;
        if (!isTrying)
            content = {iconOf(*m_device),
                       QStringList{m_device->displayName(), reason,
                                   sinceText(textKey("since"), m_since, "HH:mm")}
                           .join(QLatin1Char('\n')),
                       orvelle::needsNewCode(*m_device) ? orvelle::text("enter_new_code")
                                                        : orvelle::text("retry"),
                       false};
    }
    if (m_state != State::kWaiting)
        m_reason.clear();
    m_ui->notice()->setContent(content);
}

/// The button below the reason.
void KvDevicePlayerView::helpOut() {
    if (m_state == State::kPaused)
        takeSnapshot();
    else if (m_device && orvelle::needsNewCode(*m_device))
        emit clickCodeButton(this);
    else
        retry();
}

void KvDevicePlayerView::retry() {
    if (m_state != State::kWaiting)
        return;
    if (KvDeviceManager* manager = KvDeviceManager::instance())
        manager->connectSoon();
    m_retryTimer.start();
    _invokeCheckPlayer();
}

/// What needs a picture waits for the first, so that the buttons do not come and go with every
/// attempt to reach a camera.
void KvDevicePlayerView::followButtons() {
    const bool isPlaying = m_state == State::kPlaying;
    for (const UI::Button button : {UI::kSound, UI::kCapture, UI::kPtz})
        m_ui->setButtonEnabled(button, isPlaying);
    m_ui->volumeSlider()->setEnabled(isPlaying);
    m_ui->setButtonEnabled(UI::kRecord, isPlaying || m_record->recording().isRunning());
    m_ui->setButtonEnabled(UI::kPlay, isPlaying || m_state == State::kPaused);
    m_ui->setButtonEnabled(UI::kSettings, m_device && m_device->isOnline());
    m_ui->setHeard(isPlaying && m_sound->isOn());
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
    m_ui->setButtonShown(UI::kPtz, m_facts->isTurnable());
}

void KvDevicePlayerView::_doUpdateSpeedLabel(int bytesPerSecond) {
    if (m_player->isRunning())
        m_ui->setSpeedText(QString::asprintf("%.0lfKB/s", qMax(0, bytesPerSecond) / 1024.0));
}

void KvDevicePlayerView::setFullscreen(bool fullscreen) {
    m_ui->button(UI::kFullscreen)->setState(fullscreen ? 1 : 0);
    m_ui->setTip(UI::kFullscreen, fullscreen ? textKey("minimized") : textKey("maximized"),
                 PreviewKey::kFullscreen);
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

void KvDevicePlayerView::_invokeMouseTimer() {
    m_ui->overlay().rest();
}

/// The bars may have left since the focus came.
bool KvDevicePlayerView::focusNextPrevChild(bool next) {
    if (orvelle::FocusRing::isKeyboardInUse())
        m_ui->overlay().wake();
    return QWidget::focusNextPrevChild(next);
}

void KvDevicePlayerView::setInset(int inset) {
    m_inset = inset;
    resizeEvent(nullptr);
}

void KvDevicePlayerView::resizeEvent(QResizeEvent*) {
    const QSize inner = (size() - 2 * QSize(m_inset, m_inset)).expandedTo({0, 0});
    m_ui->setGeometry(QRect(QPoint(m_inset, m_inset), inner));
}

void KvDevicePlayerView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && window()->isFullScreen())
        _onClickUIFullscreenButton(false);
    else if (event->key() == Qt::Key_Escape && m_ui->ptzView()->hasFocus())
        setPtzShown(false);
    else if (!pressKey(*event))
        QWidget::keyPressEvent(event);
}

/// The keys press what the mouse would; those of the grid are not taken.
bool KvDevicePlayerView::pressKey(const QKeyEvent& event) {
    switch (orvelle::previewKey(event)) {
        case PreviewKey::kPause:
            _onClickUIPlayButton(false);
            return true;
        case PreviewKey::kRecord:
            _onClickUIRecordButton(false);
            return true;
        case PreviewKey::kSnapshot:
            takeSnapshot();
            return true;
        case PreviewKey::kSound:
            _onClickUIVolumeButton(false);
            return true;
        case PreviewKey::kOnlyThisSound:
            listenOnlyHere();
            return true;
        case PreviewKey::kFullscreen:
            _onClickUIFullscreenButton(false);
            return true;
        case PreviewKey::kZoomIn:
            m_ui->zoom().zoomBy(1.0);
            return true;
        case PreviewKey::kZoomOut:
            m_ui->zoom().zoomBy(-1.0);
            return true;
        case PreviewKey::kZoomReset:
            m_ui->zoom().reset();
            return true;
        default:
            return false;
    }
}

void KvDevicePlayerView::_onClickUISdcardButton(bool) {
    emit clickSDCardButton(this);
}

void KvDevicePlayerView::_onClickUICloseButton(bool) {
    qDebug("_onClickUICloseButton");
    emit clickCloseButton(this);
}

void KvDevicePlayerView::_onClickUISettingsButton(bool) {
    qDebug("_onClickUISettingsButton");
    emit clickSettingButton(this);
}

void KvDevicePlayerView::_onClickUIPlayButton(bool) {
    if (m_state == State::kPlaying) {
        m_player->pause();
        m_ui->setSpeedText({});
        enter(State::kPaused);
    } else if (m_state == State::kPaused) {
        m_lastPictureMs = nowMs();
        m_player->resume();
        enter(State::kPlaying);
    }
}

/// The camera decides the quality; the button only shows it.
void KvDevicePlayerView::_onClickUIHdButton(bool) {}

void KvDevicePlayerView::_onClickUIVolumeButton(bool) {
    if (m_player->isRunning())
        m_sound->toggle();
}

void KvDevicePlayerView::listenOnlyHere() {
    if (!m_player->isRunning())
        return;
    if (!m_sound->isOn())
        m_sound->choose(1.0);
    emit onlyThisHeard(this);
}

void KvDevicePlayerView::silence() {
    m_sound->silence();
}

void KvDevicePlayerView::_onClickUIFullscreenButton(bool) {
    const bool wasFullscreen = window()->isFullScreen();
    qDebug("%s", wasFullscreen ? "full -> not full" : "not full -> full");
    setFullscreen(!wasFullscreen);
    emit clickFullButton(this, !wasFullscreen);
}

void KvDevicePlayerView::_onDoubleClickVideoView() {
    _onClickUIFullscreenButton(false);
}

void KvDevicePlayerView::_onClickUIPtzButton(bool) {
    if (m_player->isRunning())
        setPtzShown(m_ui->ptzView()->isHidden());
}

QString KvDevicePlayerView::capture(const QString& name) {
    if (!m_device)
        return {};
    return orvelle::saveSnapshot(*m_ui->videoView(), m_device->uid(), name,
                                 QDateTime::currentDateTime(), this, m_toast);
}

void KvDevicePlayerView::_onClickUICaptureButton(bool) {
    if (m_player->isRunning())
        takeSnapshot();
}

/// Of a paused picture, too.
void KvDevicePlayerView::takeSnapshot() {
    if (m_state != State::kPlaying && m_state != State::kPaused)
        return;
    const QString path = capture(timeStampName());
    if (path.isEmpty())
        return;
    KvDirectoryDialog(orvelle::text("the_screenshot_you_recorded_is_save_to"), path, window())
        .execCentred(this);
}

void KvDevicePlayerView::_onClickUIRecordButton(bool) {
    m_record->toggle();
}

bool KvDevicePlayerView::isRecording() const {
    return m_record->recording().isRecording();
}

void KvDevicePlayerView::followRecording() {
    const bool isRunning = m_record->recording().isRunning();
    m_ui->button(UI::kRecord)->setState(isRunning ? 0 : 1);
    m_ui->setTip(UI::kRecord, isRunning ? textKey("stop_recording") : textKey("record_video"),
                 PreviewKey::kRecord);
    m_ui->setRecorded(isRecording());
    if (isRecording())
        m_ui->setRecordShown(true);
    else
        emit hideRecordView();
    followButtons();
}

void KvDevicePlayerView::_onClickSaveRecordButton(bool) {
    m_record->requestEnd(TileRecording::End::kSave);
}

void KvDevicePlayerView::_onClickCancelRecordButton(bool) {
    m_record->requestEnd(TileRecording::End::kDiscard);
}

void KvDevicePlayerView::_doUpdateRecordTime(double seconds) {
    m_ui->setRecordTime(seconds, m_state == State::kPlaying);
}

void KvDevicePlayerView::_doHideRecordView() {
    m_ui->setRecordShown(false);
}

// What runs on the player's threads.

int32_t KvDevicePlayerView::onPlayerEvent(void* user, int32_t event, double, double) {
    static_cast<KvDevicePlayerView*>(user)->handlePlayerEvent(event);
    return 0;
}

void KvDevicePlayerView::handlePlayerEvent(int32_t event) {
    switch (event) {
        case KvBasePlayerOpenFailed:
            qDebug("KvBasePlayerOpenFailed");
            m_openFailed = true;
            emit startCheckSignal();
            break;
        case KvBasePlayerFirstFrame:
            m_lastPictureMs = nowMs();
            m_firstPicture = true;
            emit hideLoadingSignal();
            writeThumbnail();
            break;
        case KvBasePlayerPlayEnded:
            qDebug("KvBasePlayerPlayEnded");
            break;
        case KvBasePlayerProgress:
            m_lastPictureMs = nowMs();
            reportSpeed();
            break;
        default:
            break;
    }
}

void KvDevicePlayerView::writeThumbnail() {
    if (!m_ui->videoView()->snapshot(m_thumbnailPath)) {
        qCWarning(lcUi) << m_thumbnailPath << "could not be written";
        return;
    }
    // Snapshots are the user's to share, this one is not.
    if (!orvelle::takeFromOthers(m_thumbnailPath.toStdString()))
        qCWarning(lcUi) << "others may read" << m_thumbnailPath;
    emit playerViewThumbUpdate(this);
}

/// The label changes once a second at most, whatever the frame rate.
void KvDevicePlayerView::reportSpeed() {
    if (m_speedClock.isValid() && m_speedClock.elapsed() < kSpeedIntervalMs)
        return;
    m_speedClock.start();
    emit updateSpeedLabelSignal(m_player->speed());
}
