#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "core/file_writer.h"
#include "device/connect_attempts.h"
#include "device/device.h"
#include "device/device_group.h"
#include "device/device_manager_thread.h"
#include "device/entry_list.h"
#include "device/media_folder_names.h"
#include "device/tutk_device.h"
#include "device/worker_reaper.h"

namespace orvelle {
class InitThreadPause;
}

/// The one owner of all devices and of the entries of the camera list. It keeps every device
/// connected by a thread that goes round the list.
///
/// Locks, in this order: the device lock (lockDevices), which the thread holds for moments; then
/// one of attempts, list, entries. The interface thread calls only what is marked "short"; the rest
/// may close a session, so it belongs to workers, which call stopInitThread() first.
class KvDeviceManager : public QObject {
    Q_OBJECT
public:
    /// The link has so many channels, one a camera.
    static constexpr int kMaxDevices = 32;

    /// Pace of the rounds, in milliseconds.
    struct Timing {
        /// Between two rounds, which ask for 2 s: a camera that is switched on is found within 5 s.
        int pauseMs = 3000;
        int minPauseMs = 1000;  ///< least time from one round's start to the next
        int lostMs = 60000;     ///< so long after a session broke the pauses are minPauseMs
    };

    /// Makes the process's manager; start-up calls it once.
    static KvDeviceManager* create();
    /// Null before create() and after release().
    static KvDeviceManager* instance();
    /// Ends the thread, closes every device and deletes the manager. Blocks.
    static void release();

    /// Loads devices and entries from `devicesPath` (nothing when empty), starts the link and
    /// the thread. Returns 0.
    int start(const QString& devicesPath);
    void startInitThread();
    /// Returns as soon as the running attempts are aborted. Not from the thread itself.
    void stopInitThread();
    /// Ends the rounds for good and closes and deletes all devices; none is taken any more. For the
    /// program's way out, on a worker: an attempt to add a camera that succeeds late changes
    /// nothing. Whoever still uses devices on another thread holds the device lock.
    void closeForGood();
    bool isClosedForGood() const { return m_isClosedForGood; }
    /// 0, or why no camera can be reached at present: the link cannot be started, which is tried
    /// again with each round. Any thread.
    int linkResult() const { return m_linkResult; }
    /// Short: begins the next round of connecting at once, and others soon after.
    void connectSoon();
    /// Before start() only.
    void setTiming(const Timing& timing) { m_timing = timing; }

    /// The list itself, for callers that hold the device lock.
    const std::vector<std::unique_ptr<KvDevice>>& devices() const { return m_devices; }
    void lockDevices() { m_devicesMutex.lock(); }
    void unlockDevices() { m_devicesMutex.unlock(); }
    /// Short: a copy of the list. The devices stay until they are removed or cleared.
    QList<KvDevice*> devicesSnapshot() const;
    /// Short unless `lock`, which takes the device lock.
    bool contains(const KvDevice* device, bool lock) const;
    /// Short. Null when there is none.
    KvDevice* findDevice(const QString& uid) const;

    /// The password of a listed camera. Takes the device lock.
    std::optional<QString> passwordOf(const QString& uid) const;

    /// Takes the device only when no equal one is listed; true when so.
    bool addDevice(std::unique_ptr<KvDevice>&& device);
    /// The same for each; the others are deleted. Returns how many were taken.
    int addDevices(std::vector<std::unique_ptr<KvDevice>> devices);
    /// Takes that very object out of the list and out of every group's members and hands it
    /// to the caller; null when it is not listed. Aborts a running attempt.
    [[nodiscard]] std::unique_ptr<KvDevice> removeDevice(KvDevice* device);
    /// Closes and deletes all devices, sixteen within 2 s. The thread must have been stopped.
    void clearDevices();

    /// Short: the camera list from top to bottom.
    QList<KvDeviceGroup*> groups() const { return m_entries.all(); }
    /// Short: its entries of type 0.
    QList<KvDeviceGroup*> singleCameraGroups() const;
    /// Short.
    bool containsGroup(const KvDeviceGroup* group) const { return m_entries.contains(group); }
    /// Short: the entry of that camera alone, or null.
    KvDeviceGroup* findDeviceGroup(const KvDevice* device) const { return m_entries.find(device); }
    /// Short. Takes the entry only when no equal one is listed, then reorders, which saves it;
    /// true when taken.
    [[nodiscard]] bool addGroup(std::unique_ptr<KvDeviceGroup>&& group) {
        return m_entries.add(std::move(group));
    }
    /// Takes the listed entry that equals `group` out of the list; null when there is none.
    [[nodiscard]] std::unique_ptr<KvDeviceGroup> removeGroup(const KvDeviceGroup* group) {
        return m_entries.take(group);
    }
    /// Short: sorts by groupIndex, numbers from 0 and saves the entries that moved, without waiting
    /// for the disk.
    void reorderGroups() { m_entries.reorder(); }
    /// Short: looks every entry's members up anew.
    void resolveMembers() { m_entries.resolveMembers(); }
    /// Before a camera of that UID is saved: a group that has this name gets another one. Waits for
    /// the disk; false when it cannot be saved.
    bool makeRoomFor(const QString& uid) { return m_entries.makeRoomFor(uid); }

    /// Interface thread: takes the workers of dialogs that nobody waits for any more.
    orvelle::WorkerReaper& reaper() { return m_reaper; }
    /// Writes the files of cameras and entries; also for what else must not wait for the disk. What
    /// fails is signalled. Any thread.
    orvelle::FileWriter& fileWriter() { return m_fileWriter; }
    /// Whether a file could not be written since the last call. Any thread.
    bool takeWriteFailure() { return m_hasWriteFailed.exchange(false); }
    /// Keeps the name in a camera's media folder, if there is one, up to date without waiting for
    /// the disk. After the folder was made and after the camera was renamed. Any thread.
    void nameMediaFolder(const KvDevice& device) {
        m_folderNames.set(device.uid(), device.displayName());
    }
    /// Returns once all files are written.
    void finishWrites() { m_fileWriter.finish(); }

    static int getMaxGroupId();
    static void setMaxGroupId(int id);

    /// Asks the local network for cameras for `timeoutMs`; returns how many were appended to
    /// `result`. Blocks, unless `isStopped` becomes true.
    int lanSearch(std::vector<orvelle::CameraRecord>& result, int timeoutMs,
                  const std::function<bool()>& isStopped = {});

signals:
    /// A worker's camera or entry came or went; on the interface thread.
    void listChanged();
    /// A file could not be written that nobody waited for; see takeWriteFailure(). Any thread.
    void writeFailed();
    /// linkResult() is another one. The manager's thread, or that of start().
    void linkChanged();

private:
    friend class KvDeviceManagerThread;
    friend class orvelle::InitThreadPause;

    KvDeviceManager();
    ~KvDeviceManager() override;

    void load(const QString& devicesPath);
    int startLink();
    void noteLink(int result);
    void launchInitThread();
    void endInitThread();
    std::unique_ptr<KvDevice> takeListed(const KvDevice* device);

    Timing m_timing;
    const std::shared_ptr<orvelle::RoundSignal> m_roundSignal;

    std::mutex m_threadMutex;  ///< guards the next three
    std::unique_ptr<KvDeviceManagerThread> m_initThread;
    int m_pauses = 0;                            ///< the thread runs only when there is none
    std::atomic<bool> m_isClosedForGood{false};  ///< set under m_threadMutex and the device lock
    int m_endingThreads = 0;                     ///< that were stopped and are waited for
    std::condition_variable m_threadEnded;

    mutable std::mutex m_devicesMutex;  ///< the device lock: no device comes or goes
    mutable std::mutex m_listMutex;     ///< guards m_devices; writers also hold the device lock
    std::vector<std::unique_ptr<KvDevice>> m_devices;

    orvelle::ConnectAttempts m_attempts;  ///< begun by the thread, with the device lock held

    std::atomic<int> m_linkResult{0};
    std::atomic<bool> m_hasWriteFailed{false};
    orvelle::MediaFolderNames m_folderNames;
    orvelle::WorkerReaper m_reaper;  ///< owned by the interface thread
    orvelle::FileWriter m_fileWriter;
    orvelle::EntryList m_entries;  ///< uses the writer
};
