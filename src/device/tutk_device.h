#pragma once

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "device/device.h"
#include "device/request_queue.h"
#include "device/response_listeners.h"
#include "device/tutk_request.h"

class KvThread;
class KvTimer;

/// A camera reached over the link: its record, its file, its session and command channel.
///
/// The record (name, uid, password, ...) is filled before the device is shared; afterwards the uid
/// stays as it is, the password changes by changePassword() and name, ip, port and volume belong to
/// the interface thread. The session part may be used from any thread.
class KvTUTKDevice : public KvDevice {
    Q_OBJECT
public:
    using ListenerCallback = orvelle::ResponseListeners::Callback;

    /// Time-outs of the session, in milliseconds.
    struct Timing {
        int watchdogMs = 20000;   ///< an attempt that takes longer is aborted
        int keepAliveMs = 30000;  ///< from one keep-alive to the next
        /// How long a refused password is not tried again by ensureConnected(): at first, doubled
        /// each time, and at most. A camera counts the wrong ones of an address and makes all who
        /// share it wait; but a stranger who answers in its place looks the same, and must not keep
        /// the client away for long.
        int refusedMs = 5000;
        int maxRefusedMs = 30'000;
    };

    KvTUTKDevice();
    /// Takes uid and password from the code that the phone shows; they stay empty when it is
    /// not usable.
    explicit KvTUTKDevice(const QString& deviceCode);
    /// Copies the record and shows the session's handles; it neither owns nor closes them.
    KvTUTKDevice(const KvTUTKDevice& other);
    ~KvTUTKDevice() override;  ///< aborts what runs and closes the session

    /// Whether every character is an ASCII letter or digit; true for an empty text.
    static bool isValidUid(const char* text, int size);
    /// What a failed attempt with that result says about the camera.
    static State stateOfFailure(int result);
    /// Whether a UID can name a camera and its files: valid, not empty and not too long.
    static bool isUsableUid(const QString& uid);
    /// The usable devices of a directory, in order of their file names.
    static std::vector<std::unique_ptr<KvTUTKDevice>> loadAll(const QString& directory);

    int type() const override { return 1; }
    int ensureConnected() override;
    int init() override;
    void uninit() override;
    void noteNotFound(int result) override;
    void cancelInit() override;
    bool isWorking() const override { return m_sendRunning && m_recvRunning; }
    bool isConnected() const override { return m_sid >= 0 && m_avIndex >= 0; }
    QString displayName() const override { return m_name.isEmpty() ? m_uid : m_name; }
    QString uid() const override { return m_uid; }
    void setName(const QString& name) override { m_name = name; }
    void setUid(const QString& uid) override { m_uid = uid; }
    /// Same kind and same UID.
    bool equals(const KvDevice* other) const override;
    bool operator==(const KvDevice& other) const override { return equals(&other); }
    bool hasSameUid(const KvDevice* other) const;
    bool removeFile() override;
    int save() override;
    int saveLater() override;
    KvBasePlayerInput* createInput() override;
    void requestStop() override;
    State state() const override;
    int lastResult() const override { return m_lastResult; }

    int deviceId() const { return m_deviceId; }
    QString name() const { return m_name; }
    QString ip() const { return m_ip; }
    QString password() const;  ///< any thread
    int port() const { return m_port; }
    int mode() const { return m_mode; }  ///< the camera's device type code, -1 when unknown
    double volume() const { return m_volume; }
    int sid() const { return m_sid; }
    int avIndex() const { return m_avIndex; }
    uint8_t channel() const { return m_channel; }
    void setIp(const QString& ip) { m_ip = ip; }
    void setPassword(const QString& password);
    /// Takes a password that has proved right. An open session goes on; the next attempt, which
    /// nothing holds back, uses it. Not saved by this. Any thread.
    void changePassword(const QString& password);
    void setPort(int port) { m_port = port; }
    void setMode(int mode) { m_mode = mode; }
    void setVolume(double volume) { m_volume = volume; }

    /// Allocates the numeric id once.
    void ensureDeviceId();
    bool writeToFile(const QString& path) const;
    QByteArray toXml() const;
    /// 0, or -1 when the file is not usable; why not is logged.
    int readFromFile(const QString& path);

    /// Queues a command and returns at once; false when no session is open or too many wait.
    bool sendIOCtrl(uint32_t type, const void* data, int size);
    /// The same with eight zero bytes.
    bool sendIOCtrl(uint32_t type);

    /// `callback` runs on the receive thread for every response, which lives for the call only.
    void addListener(void* object, ListenerCallback callback);
    /// Once it returned, the listener is not running and is not called again. Waits for a
    /// running callback unless called from it.
    void removeListener(void* object);

    /// Before the first attempt only.
    void setTiming(const Timing& timing) { m_timing = timing; }
    void setSessionLostCallback(std::function<void()> callback) override;

    /// The loops of the command channel, on the threads of command_threads.h.
    void doSend(const KvThread& thread);
    void doRecv(const KvThread& thread);

private:
    enum class Abort { kNone, kCancelled, kTimedOut };
    class Turn;

    static void onWatchdog(void* device);
    int openAttempt();
    int openSession();
    int login(int sid);
    void closeAll();
    void closeSession();
    void closeChannel();
    void abortAttempt(Abort reason);
    void startLoops();
    void stopLoops();
    void loopEnded(int result);
    int send(const KvTUTKRequest& request);
    void receive(KvTUTKResponse response);
    void rememberMode(const KvTUTKResponse& response);
    void noteFailure(int result);
    void holdBack(bool isAnotherRefusal);
    bool isHeldBack() const;
    void holdBackNoMore();
    static bool isFailure(State state);
    void readField(const QString& tag, const QString& text);

    // The record; see the class comment.
    int m_deviceId = -1;
    QString m_name;
    QString m_ip;
    QString m_uid;
    int m_port = 0;
    double m_volume = 1.0;
    Timing m_timing;
    const bool m_ownsSession = true;

    std::atomic<int> m_mode{-1};
    std::atomic<bool> m_connecting{false};
    std::atomic<Abort> m_abort{Abort::kNone};  ///< with m_sid: whoever comes second sees the first
    std::atomic<int> m_sid{-1};
    std::atomic<int> m_avIndex{-1};
    std::atomic<uint8_t> m_channel{255};
    std::atomic<bool> m_sendRunning{false};
    std::atomic<bool> m_recvRunning{false};
    std::atomic<State> m_state{State::kNeverTried};
    std::atomic<int> m_lastResult{0};

    mutable std::mutex m_passwordMutex;  ///< guards the next three
    QString m_password;
    int m_refusals = 0;  ///< of this password, one after the other
    std::chrono::steady_clock::time_point m_heldBackUntil;

    std::mutex m_callbackMutex;  ///< guards m_sessionLost
    std::function<void()> m_sessionLost;

    std::mutex m_turnMutex;  ///< guards m_turnTaken
    std::condition_variable m_turnFree;
    bool m_turnTaken = false;  ///< one thread at a time opens or closes the session

    // Owned by the thread whose turn it is.
    std::unique_ptr<KvTimer> m_watchdog;
    std::unique_ptr<KvThread> m_sendThread;
    std::unique_ptr<KvThread> m_recvThread;

    orvelle::RequestQueue m_requests;
    orvelle::ResponseListeners m_listeners;
};
