#pragma once

#include <QDateTime>
#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <atomic>
#include <cstdint>
#include <memory>

#include "ui/preview/device_player_view_ui.h"
#include "ui/widgets/clicker.h"
#include "ui/widgets/toast.h"

class KvDevice;
class KvDevicePlayer;
class KvTUTKDevice;

namespace orvelle {
class CameraFacts;
class RecordControl;
class TileSound;
}  // namespace orvelle

/// One camera's live picture with its name, state, bit rate and controls.
///
/// It plays whenever the camera is online. A camera that is not is looked for every two seconds,
/// as is one whose stream broke or stands still; its last picture stays meanwhile.
///
///     idle --device--> waiting --online--> loading --first picture--> playing <--> paused
///                         ^------------------------- stream ends --------------------/
///
/// Interface thread; the player's and the device's threads reach it through its signals only.
class KvDevicePlayerView : public QWidget {
    Q_OBJECT
public:
    explicit KvDevicePlayerView(QWidget* parent = nullptr);
    ~KvDevicePlayerView() override;

    /// Binds the tile to a camera (borrowed) and starts to play, or, with null, to none.
    void setDevice(KvDevice* device);
    /// Shows the camera's name anew.
    void updateName();
    KvDevice* device() const { return m_device; }
    /// Devices bound from now on are silent at first, and the sound button is not remembered.
    void setNoSound(bool noSound) { m_noSound = noSound; }
    /// A mode of KvDevicePlayerViewUI.
    void setControlMode(int mode) { m_ui->setMode(mode); }
    /// What is left free between the picture and the tile's edge, in pixels.
    void setInset(int inset);
    /// What the full-screen button shows; the window itself is the owner's.
    void setFullscreen(bool fullscreen);

    /// While nobody can see the window only key pictures are decoded.
    void setMinimised(bool minimised);

    /// Whether it plays or waits for its camera.
    bool isStarted() const { return m_state != State::kIdle; }
    /// Whether a recording runs that would end with the picture.
    bool isRecording() const;

    /// Silent until the user wants it otherwise.
    void silence();

    /// Ends playing and blanks the picture. Of a recording what was recorded is saved meanwhile.
    void stopPlay();
    /// Asks the player's threads to end, without waiting. An owner of several tiles calls it on
    /// all before it stops the first.
    void requestStop();

    /// Draws the current picture into `rect`, on black.
    void paintThumb(QPainter* painter, const QRect& rect) const;
    /// Writes the current picture as NAME.jpg to the camera's snapshot folder; its path, or empty.
    QString capture(const QString& name);
    /// Whether a point of the parent lies in the picture's area.
    bool inVideoArea(int x, int y) const;

    /// The image of the quality button for a camera's answers.
    static QString qualityImage(int quality, int version);

signals:
    void playerViewThumbUpdate(KvDevicePlayerView* view);
    void clickCloseButton(KvDevicePlayerView* view);
    void clickFullButton(KvDevicePlayerView* view, bool fullscreen);
    void clickSettingButton(KvDevicePlayerView* view);
    void clickSDCardButton(KvDevicePlayerView* view);
    /// The button for a new device code, of a camera whose password was changed.
    void clickCodeButton(KvDevicePlayerView* view);
    /// The others are to be silent.
    void onlyThisHeard(KvDevicePlayerView* view);
    void startSignal();
    void stopSignal();
    void hideLoadingSignal();
    void startCheckSignal();
    void updateResolutionSignal(int quality, int version);
    void updateRecordTimeSignal(double seconds);
    void updateDeviceTypeSignal();
    void updateSpeedLabelSignal(int bytesPerSecond);
    void hideRecordView();

protected:
    bool focusNextPrevChild(bool next) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void _onClickUISdcardButton(bool);
    void _onClickUICloseButton(bool);
    void _onClickUIPlayButton(bool);
    void _onClickUIRecordButton(bool);
    void _onClickUICaptureButton(bool);
    void _onClickUIPtzButton(bool);
    void _onClickUIHdButton(bool);
    void _onClickUIVolumeButton(bool);
    void _onClickUISettingsButton(bool);
    void _onClickUIFullscreenButton(bool);
    void _onClickCancelRecordButton(bool);
    void _onClickSaveRecordButton(bool);
    void _onDoubleClickVideoView();
    void _doStart();
    void _doStop();
    void _doHideLoading();
    void _doStartCheck();
    void _doUpdateVideoResolution(int quality, int version);
    void _doUpdateRecordTime(double seconds);
    void _doUpdateDeviceType();
    void _doUpdateSpeedLabel(int bytesPerSecond);
    void _doHideRecordView();
    void _invokeMouseTimer();
    void _invokeCheckPlayer();
    void _invokeStallTimer();

private:
    enum class State {
        kIdle,     ///< no camera, or it was stopped
        kWaiting,  ///< the camera is looked for every two seconds
        kLoading,  ///< the player runs and has shown no picture yet
        kPlaying,
        kPaused,
    };

    static int32_t onPlayerEvent(void* user, int32_t event, double a, double b);
    void handlePlayerEvent(int32_t event);
    void reportSpeed();
    void writeThumbnail();

    void connectSignals();
    void connectButtons();
    void connectRecording();
    void enter(State state);
    void closePlayer();
    void setPtzShown(bool shown);
    void followState();
    void followButtons();
    void showReason();
    void helpOut();
    void retry();
    bool pressKey(const QKeyEvent& event);
    void takeSnapshot();
    void listenOnlyHere();
    void followRecording();
    static qint64 nowMs();

    bool m_noSound = false;
    int m_inset = 0;
    KvDevice* m_device = nullptr;                ///< borrowed; the manager owns it
    KvDevicePlayerViewUI* const m_ui;            ///< child
    orvelle::CameraFacts* m_facts;               ///< child
    orvelle::RecordControl* m_record = nullptr;  ///< child
    orvelle::TileSound* m_sound = nullptr;       ///< child
    State m_state = State::kIdle;
    bool m_hasPicture = false;  ///< one of this camera's is on the screen
    bool m_isMinimised = false;
    QString m_reason;            ///< why there is no picture
    QDateTime m_since;           ///< when that, or the pause, began
    uint64_t m_packetsSeen = 0;  ///< by the check for a stream that stands still
    QTimer m_checkTimer;
    QTimer m_stallTimer;
    QTimer m_retryTimer;  ///< runs while the user sees that it is being tried
    KvClicker m_clicker;
    KvToast m_toast;

    QString m_thumbnailPath;     ///< fixed while the player runs
    QElapsedTimer m_speedClock;  ///< owned by the picture thread

    // Set by worker threads. The flags tell a signal that is still on its way from one of the
    // stream before: they are cleared once its threads have ended.
    std::atomic<qint64> m_lastPictureMs{0};
    std::atomic<bool> m_openFailed{false};
    std::atomic<bool> m_firstPicture{false};

    std::unique_ptr<KvDevicePlayer> m_player;  ///< last, so that it goes first
};
