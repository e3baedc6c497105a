#include "ui/preview/device_player_view.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

#include "core/file_utils.h"
#include "core/language.h"
#include "device/device.h"
#include "media/device_player.h"
#include "media/player_recorder.h"
#include "render/video_view.h"
#include "ui/list/device_state_text.h"
#include "ui/palette.h"

namespace {

constexpr int kCheckIntervalMs = 2000;
constexpr int kSpeedIntervalMs = 1000;
constexpr int kBarHeight = 40;
constexpr double kRecordLimitSeconds = 3600.0;

QString text(const char* key) {
    return KvLanguage::getString(QLatin1String(key));
}

QString timeStampName() {
    return QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
}

QPushButton* makeButton(QWidget* bar, const char* key) {
    auto* button = new QPushButton(text(key), bar);
    button->setCursor(Qt::PointingHandCursor);
    bar->layout()->addWidget(button);
    return button;
}

}  // namespace

KvDevicePlayerView::KvDevicePlayerView(QWidget* parent) : QWidget(parent) {
    buildChildren();
    m_player = std::make_unique<KvDevicePlayer>();
    m_player->setView(m_videoView);
    m_player->setCallback(this, onPlayerEvent);
    m_player->setRecordCallback(this, onRecordEvent);
    m_checkTimer.setInterval(kCheckIntervalMs);
    connectSignals();
    setSoundOn(false);
    setDevice(nullptr);
}

KvDevicePlayerView::~KvDevicePlayerView() {
    m_checkTimer.stop();
    m_player->shutdown();
}

void KvDevicePlayerView::buildChildren() {
    m_videoView = new KvVideoView(this);
    m_topBar = new QWidget(this);
    m_bottomBar = new QWidget(this);
    const QString barStyle = QStringLiteral(
                                 "QWidget{background:rgb(57, 55, 54);}"
                                 "QLabel{color:#ffffff;}"
                                 "QPushButton{background:transparent;border:none;border-radius:5px;"
                                 "color:#ffffff;padding:4px 12px;}"
                                 "QPushButton:hover{background:%1;}"
                                 "QPushButton:disabled{color:#8a8a8a;}")
                                 .arg(QLatin1String(orvelle::palette::kAccent));
    for (QWidget* bar : {m_topBar, m_bottomBar}) {
        bar->setStyleSheet(barStyle);
        auto* layout = new QHBoxLayout(bar);
        layout->setContentsMargins(12, 0, 12, 0);
        layout->setSpacing(12);
    }
    m_nameLabel = new QLabel(m_topBar);
    m_stateLabel = new QLabel(m_topBar);
    m_topBar->layout()->addWidget(m_nameLabel);
    static_cast<QHBoxLayout*>(m_topBar->layout())->addStretch();
    m_topBar->layout()->addWidget(m_stateLabel);

    m_soundButton = makeButton(m_bottomBar, "sound");
    m_captureButton = makeButton(m_bottomBar, "screenshot");
    m_recordButton = makeButton(m_bottomBar, "record_video");
    m_messageLabel = new QLabel(m_bottomBar);
    static_cast<QHBoxLayout*>(m_bottomBar->layout())->addStretch();
    m_bottomBar->layout()->addWidget(m_messageLabel);

    m_speedLabel = new QLabel(this);
    m_speedLabel->setAlignment(Qt::AlignCenter);
    m_speedLabel->setStyleSheet(
        QStringLiteral("QLabel{color:#ffffff;background:#00a7f9;border-radius:5px;};"));
    m_speedLabel->hide();
}

void KvDevicePlayerView::connectSignals() {
    connect(this, &KvDevicePlayerView::startSignal, this, &KvDevicePlayerView::_doStart);
    connect(this, &KvDevicePlayerView::startCheckSignal, this, &KvDevicePlayerView::_doStartCheck);
    connect(this, &KvDevicePlayerView::hideLoadingSignal, this,
            &KvDevicePlayerView::_doHideLoading);
    connect(this, &KvDevicePlayerView::updateSpeedLabelSignal, this,
            &KvDevicePlayerView::_doUpdateSpeedLabel);
    connect(this, &KvDevicePlayerView::updateRecordTimeSignal, this,
            &KvDevicePlayerView::_doUpdateRecordTime);
    connect(this, &KvDevicePlayerView::hideRecordView, this,
            &KvDevicePlayerView::_doHideRecordView);
    connect(&m_checkTimer, &QTimer::timeout, this, &KvDevicePlayerView::_invokeCheckPlayer);
    connect(m_soundButton, &QPushButton::clicked, this,
            &KvDevicePlayerView::_onClickUIVolumeButton);
    connect(m_captureButton, &QPushButton::clicked, this,
            &KvDevicePlayerView::_onClickUICaptureButton);
    connect(m_recordButton, &QPushButton::clicked, this,
            &KvDevicePlayerView::_onClickUIRecordButton);
}

void KvDevicePlayerView::setDevice(KvDevice* device) {
    stopPlay();
    m_device = device;
    m_player->setDevice(device);
    m_nameLabel->setText(device ? device->displayName() : QString());
    m_messageLabel->clear();
    m_bottomBar->setEnabled(device != nullptr);
    updateStateLabel();
    if (device)
        emit startSignal();
}

void KvDevicePlayerView::stopPlay() {
    m_checkTimer.stop();
    stopRecording();
    m_player->shutdown();
    m_videoView->showFrame(nullptr);
    m_speedLabel->hide();
}

void KvDevicePlayerView::updateStateLabel() {
    m_stateLabel->setText(m_device ? orvelle::deviceStateText(*m_device) : QString());
}

void KvDevicePlayerView::showMessage(const QString& message) {
    m_messageLabel->setText(message);
}

void KvDevicePlayerView::_doStart() {
    m_player->shutdown();
    updateStateLabel();
    if (!m_device)
        return;
    if (!m_device->isOnline() || m_player->play() < 0) {
        m_checkTimer.start();
        return;
    }
    m_checkTimer.stop();
    showMessage(text("loading"));
}

/// The connection ended: the last picture stays until the camera is back.
void KvDevicePlayerView::_doStartCheck() {
    stopRecording();
    m_player->shutdown();
    m_speedLabel->hide();
    m_checkTimer.start();
    _invokeCheckPlayer();
}

void KvDevicePlayerView::_invokeCheckPlayer() {
    updateStateLabel();
    if (m_device && m_device->isOnline())
        emit startSignal();
}

void KvDevicePlayerView::_doHideLoading() {
    showMessage(QString());
    updateStateLabel();
}

void KvDevicePlayerView::_doUpdateSpeedLabel(int bytesPerSecond) {
    m_speedLabel->setText(QString::asprintf("%.0lfKB/s", qMax(0, bytesPerSecond) / 1024.0));
    m_speedLabel->show();
}

void KvDevicePlayerView::setSoundOn(bool on) {
    m_soundOn = on;
    m_player->setVolume(on ? 1.0 : 0.0);
    m_soundButton->setText(text(on ? "sound_on" : "sound_off"));
}

void KvDevicePlayerView::_onClickUIVolumeButton() {
    setSoundOn(!m_soundOn);
}

QString KvDevicePlayerView::capture() {
    if (!m_device)
        return {};
    const QString path = KvFileUtils::screenshotPath(m_device->uid()) + QLatin1Char('/') +
                         timeStampName() + QStringLiteral(".jpg");
    return m_videoView->snapshot(path) ? path : QString();
}

void KvDevicePlayerView::_onClickUICaptureButton() {
    const QString path = capture();
    showMessage(path.isEmpty() ? text("screenshot_failed") : path);
}

void KvDevicePlayerView::_onClickUIRecordButton() {
    if (m_player->isRecording()) {
        stopRecording();
        return;
    }
    if (!m_device || !m_player->isRunning())
        return;
    m_recordPath = KvFileUtils::videoPath(m_device->uid()) + QLatin1Char('/') + timeStampName() +
                   QStringLiteral(".mp4");
    m_player->startRecord(m_recordPath, QStringLiteral("mp4"), kRecordLimitSeconds);
    m_recordButton->setText(text("stop_recording"));
}

void KvDevicePlayerView::stopRecording() {
    m_player->stopRecord();
    m_recordButton->setText(text("record_video"));
}

void KvDevicePlayerView::_doUpdateRecordTime(double seconds) {
    const int whole = static_cast<int>(seconds);
    showMessage(QString::asprintf("%02d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60));
}

void KvDevicePlayerView::_doHideRecordView(bool failed) {
    stopRecording();
    showMessage(failed ? text("recording_failed") : m_recordPath);
}

int32_t KvDevicePlayerView::onPlayerEvent(void* user, int32_t event, double, double) {
    auto* view = static_cast<KvDevicePlayerView*>(user);
    switch (event) {
        case KvBasePlayerOpenFailed:
            emit view->startCheckSignal();
            break;
        case KvBasePlayerFirstFrame:
            emit view->hideLoadingSignal();
            break;
        case KvBasePlayerProgress:
            view->reportSpeed();
            break;
        default:
            break;
    }
    return 0;
}

int32_t KvDevicePlayerView::onRecordEvent(void* user, int32_t event, double seconds, double) {
    auto* view = static_cast<KvDevicePlayerView*>(user);
    if (event == KvPlayerRecorder::kProgress)
        emit view->updateRecordTimeSignal(seconds);
    else if (event == KvPlayerRecorder::kEnded || event == KvPlayerRecorder::kFailed)
        emit view->hideRecordView(event == KvPlayerRecorder::kFailed);
    return 0;
}

/// The label changes once a second at most, whatever the frame rate. Picture thread.
void KvDevicePlayerView::reportSpeed() {
    if (m_speedClock.isValid() && m_speedClock.elapsed() < kSpeedIntervalMs)
        return;
    m_speedClock.start();
    emit updateSpeedLabelSignal(m_player->speed());
}

void KvDevicePlayerView::resizeEvent(QResizeEvent*) {
    m_topBar->setGeometry(0, 0, width(), kBarHeight);
    m_bottomBar->setGeometry(0, height() - kBarHeight, width(), kBarHeight);
    m_videoView->setGeometry(0, kBarHeight, width(), height() - 2 * kBarHeight);
    const QRect video = m_videoView->geometry();
    m_speedLabel->setGeometry(video.right() - 85, video.bottom() - 35, 80, 30);
}
