#pragma once

#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "device/camera_record.h"
#include "device/camera_session.h"
#include "device/command_channel.h"
#include "device/device.h"
#include "device/record_file.h"

/// A camera reached over the link: its record with its file, its session and its command channel,
/// each of which has a class of its own.
///
/// Any thread. The uid stays as it is once the device is shared.
class KvTUTKDevice : public KvDevice {
    Q_OBJECT
public:
    using ListenerCallback = orvelle::CommandChannel::ListenerCallback;
    using Timing = orvelle::CameraSession::Timing;

    KvTUTKDevice();
    explicit KvTUTKDevice(orvelle::CameraRecord record);
    /// Takes uid and password from the code that the phone shows; they stay empty when it is
    /// not usable.
    explicit KvTUTKDevice(const QString& deviceCode);
    ~KvTUTKDevice() override;  ///< aborts what runs and closes the session

    /// What a failed attempt with that result says about the camera.
    static State stateOfFailure(int result) {
        return orvelle::CameraSession::stateOfFailure(result);
    }
    /// The usable devices of a directory, in order of their file names. Of two files of one camera
    /// the newer counts and the other is set aside.
    static std::vector<std::unique_ptr<KvTUTKDevice>> loadAll(const QString& directory);

    int type() const override { return 1; }
    int ensureConnected() override { return m_session.ensureOpen(); }
    int init() override { return m_session.open(); }
    void uninit() override { m_session.close(); }
    void noteNotFound(int result) override { m_session.noteFailureToFind(result); }
    void cancelInit() override { m_session.cancel(); }
    bool isWorking() const override { return m_channel.isOpen(); }
    bool isConnected() const override { return m_session.isOpen(); }
    QString displayName() const override { return record().displayName(); }
    QString uid() const override { return record().uid; }
    void setName(const QString& name) override;
    void setUid(const QString& uid) override;
    /// Same kind and same UID.
    bool equals(const KvDevice* other) const override;
    bool operator==(const KvDevice& other) const override { return equals(&other); }
    bool hasSameUid(const KvDevice* other) const;
    bool removeFile() override;
    int save() override;
    int saveLater() override;
    void setFileWriter(orvelle::FileWriter* writer) override { m_file.setWriter(writer); }
    KvBasePlayerInput* createInput() override;
    void requestStop() override { m_session.requestStop(); }
    State state() const override { return m_session.state(); }
    int lastResult() const override { return m_session.lastResult(); }

    /// A copy: what is saved and what search rows show.
    orvelle::CameraRecord record() const;
    int deviceId() const { return record().deviceId; }
    QString name() const { return record().name; }
    QString ip() const { return record().ip; }
    QString password() const { return record().password; }
    int port() const { return record().port; }
    int mode() const { return record().mode; }
    double volume() const { return record().volume; }
    int sid() const { return m_session.sid(); }
    int avIndex() const { return m_session.avIndex(); }
    uint8_t channel() const { return m_session.channel(); }
    void setIp(const QString& ip);
    void setPassword(const QString& password);
    /// Takes a password that has proved right. An open session goes on; the next attempt, which
    /// nothing holds back, uses it. Not saved by this.
    void changePassword(const QString& password);
    void setPort(int port);
    void setMode(int mode);
    void setVolume(double volume);

    /// Allocates the numeric id once.
    void ensureDeviceId();
    bool writeToFile(const QString& path) const;
    QByteArray toXml() const { return record().toXml(); }
    /// 0, or -1 when the file is not usable; why not is logged. The file is the device's from now
    /// on: saving replaces it, removing removes it.
    int readFromFile(const QString& path);
    orvelle::RecordFile& file() { return m_file; }

    /// Queues a command and returns at once; false when no session is open or too many wait.
    bool sendIOCtrl(uint32_t type, const void* data, int size) {
        return m_channel.send(type, data, size);
    }
    /// The same with eight zero bytes.
    bool sendIOCtrl(uint32_t type) { return m_channel.send(type); }

    /// `callback` runs on the receive thread for every response, which lives for the call only.
    void addListener(void* object, ListenerCallback callback) {
        m_channel.addListener(object, callback);
    }
    /// Once it returned, the listener is not running and is not called again. Waits for a
    /// running callback unless called from it.
    void removeListener(void* object) { m_channel.removeListener(object); }

    /// Before the first attempt only.
    void setTiming(const Timing& timing) { m_session.setTiming(timing); }
    void setSessionLostCallback(std::function<void()> callback) override {
        m_session.setLostCallback(std::move(callback));
    }

private:
    static void rememberMode(void* device, KvTUTKResponse* response);

    mutable std::mutex m_recordMutex;  ///< guards m_record
    orvelle::CameraRecord m_record;
    orvelle::RecordFile m_file;

    orvelle::CommandChannel m_channel;
    orvelle::CameraSession m_session;  ///< uses the channel
};
