#pragma once

#include <QTimer>
#include <QWidget>

#include <functional>

#include <atomic>
#include <cstdint>

class KvDevice;
class KvTUTKDevice;
class KvTUTKDeviceInfoViewUI;
class KvTUTKResponse;

/// The page about one camera: what it says of itself, its network and its memory card. The card is
/// formatted and the camera unbound here. Interface thread; the answers come on the device's
/// receive thread and reach the page through its signals, with all that they say.
class KvTUTKDeviceInfoView : public QWidget {
    Q_OBJECT

public:
    /// How long an answer is waited for, in milliseconds.
    struct Timeouts {
        int answerMs = 10'000;
        int cleanupMs = 60'000;
    };

    explicit KvTUTKDeviceInfoView(QWidget* parent = nullptr);
    ~KvTUTKDeviceInfoView() override;

    /// Asks a camera (borrowed) and shows its answers. Null lets go of it: then no listener is
    /// left with the former one, and answers on their way are ignored.
    void setDevice(KvDevice* device);
    KvDevice* device() const { return m_device; }
    /// Holds from the next question on.
    void setTimeouts(const Timeouts& timeouts) { m_timeouts = timeouts; }

    /// What else ends when the camera is unbound, asked with the question; empty for nothing.
    void setUnbindWarning(std::function<QString()> warning) {
        m_unbindWarning = std::move(warning);
    }

    /// Whole gigabytes; less than none counts as none.
    static QString formatSpace(int megabytes);
    /// The same, with the megabytes of what is less than one gigabyte.
    static QString formatSmallSpace(int megabytes);
    /// The four bytes, highest first.
    static QString formatVersion(uint32_t version);

signals:
    // `round` counts the cameras that were shown; spaces are megabytes.
    void updateDeviceInfo(int round, const QString& model, const QString& version, int freeSpace,
                          int totalSpace);
    void updateNetworkInfo(int round, const QString& ssid, const QString& ip, const QString& mac);
    void updateSDCardCleanupViewSignal(int round, int result);
    void clickBackButton();
    void unbindDevice(KvDevice* device);

protected:
    /// To the camera; false when it takes nothing now.
    virtual bool send(uint32_t type, const QByteArray& payload);
    /// What the camera says, on any thread.
    void handleResponse(const KvTUTKResponse& response);
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void _onUpdateDeviceInfo(int round, const QString& model, const QString& version, int freeSpace,
                             int totalSpace);
    void _onUpdateNetworkInfo(int round, const QString& ssid, const QString& ip,
                              const QString& mac);
    void _onClickUIBackButton(bool);
    void _onClickUISdcardCleanupButton(bool);
    void _onClickUIVersionUpgradesButton(bool);
    void _onClickUIUnbindButton(bool);
    void _doUpdateSDCardCleanupView(int round, int result);
    void _invokeWaitTimer();
    void _invokeOnlineTimer();

private:
    enum class Waiting { kNo, kForAnswer, kForCleanup };

    static void onResponse(void* user, KvTUTKResponse* response);
    void ask();
    void waitFor(Waiting what);
    void stopWaiting();
    void answered();
    bool agreed(const QString& question, const QString& verb);
    void tell(const QString& news);

    KvTUTKDeviceInfoViewUI* const m_ui;    ///< child
    KvDevice* m_device = nullptr;          ///< borrowed
    KvTUTKDevice* m_tutkDevice = nullptr;  ///< the same, when it has a command channel
    std::atomic<int> m_round{0};           ///< written with no listener registered
    std::function<QString()> m_unbindWarning;
    Timeouts m_timeouts;
    Waiting m_waiting = Waiting::kNo;
    bool m_isOnline = false;  ///< as last seen
    int m_totalSpace = 0;
    QTimer m_waitTimer;
    QTimer m_onlineTimer;
};
