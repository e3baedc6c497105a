#pragma once

#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "device/device.h"

class KvTimer;

namespace orvelle {

class CommandChannel;

/// How long a refused password is not tried again. A camera counts the wrong ones of an address
/// and makes all who share it wait; but a stranger who answers in its place looks the same, and
/// must not keep the client away for long. Any thread.
class RefusalPause {
public:
    /// Begins, or begins anew, doubled with each further refusal.
    void begin(bool isAnotherRefusal, int firstMs, int maxMs);
    void end();
    bool isOn() const;

private:
    mutable std::mutex m_mutex;  ///< guards both
    int m_refusals = 0;          ///< of one password, one after the other
    std::chrono::steady_clock::time_point m_until;
};

/// The session with one camera, from opening it to why it ended, and the states that this gives.
///
/// One thread at a time opens or closes, others wait for their turn. Any thread but those of the
/// command channel.
class CameraSession {
public:
    using State = DeviceState;

    /// Time-outs, in milliseconds.
    struct Timing {
        int watchdogMs = 20000;   ///< an attempt that takes longer is aborted
        int keepAliveMs = 30000;  ///< from one keep-alive to the next
        int refusedMs = 5000;     ///< a refused password's pause at first
        int maxRefusedMs = 30'000;
    };
    struct Account {
        QString uid;
        QString password;
    };

    /// `account` is asked at each attempt, on the thread that opens; `channel` is borrowed.
    CameraSession(CommandChannel& channel, std::function<Account()> account);
    ~CameraSession();  ///< aborts what runs and closes
    CameraSession(const CameraSession&) = delete;
    CameraSession& operator=(const CameraSession&) = delete;

    /// Before the first attempt only.
    void setTiming(const Timing& timing) { m_timing = timing; }
    /// Called on a worker thread when a session ends by itself.
    void setLostCallback(std::function<void()> callback);

    /// Opens unless open or held back by a refusal: -1 when nothing was to be done.
    int ensureOpen();
    /// 0, or -1. Blocks for the whole attempt.
    int open();
    /// Blocks, also for a running attempt.
    void close();
    /// Without an attempt: the camera cannot be reached, `result` says why. An open session stays.
    void noteFailureToFind(int result);
    /// Aborts a running attempt and nothing else.
    void cancel();
    /// Aborts an attempt and asks the loops to end, without waiting.
    void requestStop();
    /// The password is another one: nothing holds the next attempt back.
    void forgetRefusal();

    /// Whether session and channel are open; the loops may have ended all the same.
    bool isOpen() const { return m_sid >= 0 && m_avIndex >= 0; }
    /// And its loops alive.
    bool isOnline() const;
    State state() const;
    int lastResult() const { return m_lastResult; }
    int sid() const { return m_sid; }
    int avIndex() const { return m_avIndex; }
    uint8_t channel() const { return m_channelNumber; }

    /// What a failed attempt with that result says about the camera.
    static State stateOfFailure(int result);

private:
    enum class Abort { kNone, kCancelled, kTimedOut };
    class Turn;

    static void onWatchdog(void* session);
    static bool isFailure(State state);
    int attempt();
    int connectAndLogIn(const Account& account);
    int login(const Account& account, int sid);
    void abortAttempt(Abort reason);
    void began(const QString& uid);
    void broke(int result);
    void closeAll();
    void closeHandles();
    void closeAvChannel();
    void noteFailure(int result);

    CommandChannel& m_commands;
    const std::function<Account()> m_account;
    Timing m_timing;

    std::atomic<bool> m_connecting{false};
    std::atomic<Abort> m_abort{Abort::kNone};  ///< with m_sid: whoever comes second sees the first
    std::atomic<int> m_sid{-1};
    std::atomic<int> m_avIndex{-1};
    std::atomic<uint8_t> m_channelNumber{255};
    std::atomic<State> m_state{State::kNeverTried};
    std::atomic<int> m_lastResult{0};
    RefusalPause m_refusal;

    std::mutex m_callbackMutex;  ///< guards m_lost
    std::function<void()> m_lost;

    std::mutex m_turnMutex;  ///< guards m_turnTaken
    std::condition_variable m_turnFree;
    bool m_turnTaken = false;

    std::unique_ptr<KvTimer> m_watchdog;  ///< owned by the thread whose turn it is
};

}  // namespace orvelle
