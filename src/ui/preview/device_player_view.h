#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

#include <cstdint>
#include <memory>

class KvDevice;
class KvDevicePlayer;
class KvVideoView;
class QLabel;
class QPushButton;

/// One camera's live picture with its name, state, bit rate and controls.
///
/// It owns a player and plays whenever the camera is online: a camera that is not is asked for
/// every two seconds, and the last picture stays meanwhile. Interface thread; the player's
/// worker threads reach it through its signals only.
class KvDevicePlayerView : public QWidget {
    Q_OBJECT
public:
    explicit KvDevicePlayerView(QWidget* parent = nullptr);
    ~KvDevicePlayerView() override;

    /// Binds the tile to a camera (borrowed) or, with null, to none. Starts to play.
    void setDevice(KvDevice* device);
    KvDevice* device() const { return m_device; }
    /// Ends playing and blanks the picture.
    void stopPlay();
    /// Writes the current picture to the camera's snapshot folder; its path, or empty.
    QString capture();

signals:
    void startSignal();
    void startCheckSignal();
    void hideLoadingSignal();
    void updateSpeedLabelSignal(int bytesPerSecond);
    void updateRecordTimeSignal(double seconds);
    void hideRecordView(bool failed);

protected:
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void _doStart();
    void _doStartCheck();
    void _doHideLoading();
    void _doUpdateSpeedLabel(int bytesPerSecond);
    void _doUpdateRecordTime(double seconds);
    void _doHideRecordView(bool failed);
    void _invokeCheckPlayer();
    void _onClickUIVolumeButton();
    void _onClickUICaptureButton();
    void _onClickUIRecordButton();

private:
    static int32_t onPlayerEvent(void* user, int32_t event, double a, double b);
    static int32_t onRecordEvent(void* user, int32_t event, double a, double b);
    void reportSpeed();
    void buildChildren();
    void connectSignals();
    void updateStateLabel();
    void stopRecording();
    void setSoundOn(bool on);
    void showMessage(const QString& text);

    KvDevice* m_device = nullptr;  ///< borrowed; the manager owns it
    bool m_soundOn = false;
    QString m_recordPath;
    QTimer m_checkTimer;
    QElapsedTimer m_speedClock;  ///< owned by the picture thread

    KvVideoView* m_videoView = nullptr;  ///< a child, as all widgets below
    QWidget* m_topBar = nullptr;
    QWidget* m_bottomBar = nullptr;
    QLabel* m_nameLabel = nullptr;
    QLabel* m_stateLabel = nullptr;
    QLabel* m_messageLabel = nullptr;
    QLabel* m_speedLabel = nullptr;
    QPushButton* m_soundButton = nullptr;
    QPushButton* m_captureButton = nullptr;
    QPushButton* m_recordButton = nullptr;

    std::unique_ptr<KvDevicePlayer>
        m_player;  ///< last, so that it goes before the view it draws on
};
