#pragma once

#include <QObject>
#include <QString>

#include <functional>

class KvBasePlayerInput;

namespace orvelle {

class FileWriter;

/// Why a camera is, or is not, reachable right now.
enum class DeviceState {
    kNeverTried,
    kConnecting,
    kOnline,
    kUnreachable,     ///< no camera answers to the UID
    kWrongPassword,   ///< the camera answers and refuses the password
    kWrongVersion,    ///< the camera answers and speaks another version of the protocol
    kFull,            ///< the camera answers and takes no further client
    kRefusedForNow,   ///< the camera takes no login from this address until some time has passed
    kRefused,         ///< the camera answers and refuses without a cause
    kNoNetwork,       ///< this computer is in no network in which the camera could be
    kNoFreeChannel,   ///< more cameras are listed than the link has channels
    kTimedOut,        ///< the attempt hung and was cut by the watchdog
    kCancelled,       ///< the only attempt so far was stopped from this side
    kClosedByCamera,  ///< the session was open and the camera said goodbye
    kLost,            ///< the session was open and broke down
    kClosed,          ///< the session was open and was closed from this side
};

}  // namespace orvelle

/// One bound camera, whatever its kind. Owned by KvDeviceManager.
///
/// Connecting and disconnecting block, so they belong to worker threads; everything else
/// returns at once. Unless said otherwise an operation may be called from any thread.
class KvDevice : public QObject {
    Q_OBJECT
public:
    using State = orvelle::DeviceState;

    /// 1: KvTUTKDevice. 2 is reserved.
    virtual int type() const = 0;

    /// Connects unless connected; -1 when nothing was to be done, else the result of init().
    virtual int ensureConnected() = 0;
    /// Opens the session and starts its loops: 0, or -1. Blocks for the whole attempt.
    virtual int init() = 0;
    /// Ends the loops and closes the session. Blocks, also for a running attempt.
    virtual void uninit() = 0;
    /// A search went by without an answer for this device; `result` says why, a code of
    /// link/result_codes.h. Closes what is left of a lost session; an open one lives on. Blocks for
    /// moments.
    virtual void noteNotFound(int result) = 0;
    /// Aborts a running attempt and nothing else: an open session lives on, since stopping the
    /// manager's rounds must not cost a live picture. One that comes before the attempt began
    /// has no effect, so whoever waits for a worker to give up repeats it while waiting.
    virtual void cancelInit() = 0;

    /// Whether both command loops run.
    virtual bool isWorking() const = 0;
    /// Whether session and channel are open; their loops may have ended all the same.
    virtual bool isConnected() const = 0;

    virtual QString displayName() const { return {}; }
    virtual QString uid() const { return {}; }
    virtual void setName(const QString& name);
    virtual void setUid(const QString& uid);

    virtual bool equals(const KvDevice* other) const { return other == this; }
    virtual bool operator==(const KvDevice& other) const;

    /// False when a file of the device is still there.
    virtual bool removeFile() { return false; }
    /// 0 when the file was not written, else another value.
    virtual int save() { return 0; }
    /// The same without waiting for the disk, once the device is listed; the manager signals what
    /// fails then.
    virtual int saveLater() { return save(); }
    /// Who writes what nobody waits for; borrowed, null for nobody.
    virtual void setFileWriter(orvelle::FileWriter*) {}

    /// A new live input of the media pipeline for this device; the caller owns it. Null when
    /// no pipeline is registered (device_input_factory.h).
    virtual KvBasePlayerInput* createInput() = 0;

    /// Aborts an attempt and asks the loops to end, without waiting; uninit() then is quick.
    virtual void requestStop() = 0;
    /// `callback` is called on a worker thread when a session ends by itself.
    virtual void setSessionLostCallback(std::function<void()> callback) = 0;
    /// Why the device is or is not reachable.
    virtual State state() const = 0;
    /// What decided the last attempt or ended the last session: 0, or a code of
    /// link/result_codes.h. Kept while the next attempt runs.
    virtual int lastResult() const = 0;

    /// What views call "online": connected, and its loops alive.
    bool isOnline() const { return isConnected() && isWorking(); }
};
