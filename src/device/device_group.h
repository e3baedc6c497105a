#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>
#include <vector>

#include "device/entry_thumbnail.h"
#include "device/group_record.h"
#include "device/record_file.h"

class KvDevice;

/// One entry of the camera list: a single camera (type 0) or a named group (type 1).
///
/// Owned by KvDeviceManager once added. Any thread: the accessors return copies. Members are
/// borrowed; the manager empties them before devices die.
class KvDeviceGroup : public QObject {
    Q_OBJECT
public:
    enum Type {
        kSingleCamera = orvelle::GroupRecord::kSingleCamera,
        kGroup = orvelle::GroupRecord::kGroup
    };
    static constexpr int kMaxMembers = orvelle::GroupRecord::kMaxMembers;
    static constexpr int kMaxNameLength = 20;  ///< of a name that the user gives

    KvDeviceGroup();
    /// The entry of one camera.
    explicit KvDeviceGroup(KvDevice* device);
    /// Type, layout, name and members; not the place in the list nor the id.
    KvDeviceGroup(const KvDeviceGroup& other);
    /// Takes over members, layout and type; the thumbnail then is out of date.
    void copyFrom(const KvDeviceGroup& other);

    /// The usable entries of a directory, in order of their file names, members unresolved. Of two
    /// files of one entry the newer counts and the other is set aside.
    static std::vector<std::unique_ptr<KvDeviceGroup>> loadAll(const QString& directory);

    int groupId() const;
    int type() const;
    int layout() const;
    QString name() const;
    QStringList uids() const;
    QList<KvDevice*> devices() const;
    KvDevice* firstDevice() const;
    int groupIndex() const;
    bool isThumbnailReady() const;

    void setType(int type);
    void setLayout(int layout);
    void setName(const QString& name);
    void setGroupIndex(int index);
    void setThumbnailReady(bool ready);
    /// Replaces the members, both as stored and as resolved.
    void setDevices(const QList<KvDevice*>& devices);
    /// Exchanges two resolved members by their index; false when one is outside. Members that
    /// are stored but not resolved keep their places.
    bool swapDevices(int first, int second);
    /// Replaces the resolved members only; with others the thumbnail is out of date.
    void setResolvedDevices(const QList<KvDevice*>& devices);

    /// Name of the entry's file: a group's id, a camera entry's UID; empty when it has none.
    QString key() const;
    /// A group's number, in place of the one that save() allocates. A picture of the former number
    /// is out of date.
    void setGroupId(int id);
    /// False when the file cannot be written. Allocates a group's id at the first call.
    bool save();
    /// The same without waiting for the disk, once the entry is listed; the manager signals what
    /// fails then.
    bool saveLater();
    /// Who writes what nobody waits for; borrowed, null for nobody.
    void setFileWriter(orvelle::FileWriter* writer) { m_file.setWriter(writer); }
    /// Whether the entry stands in the file named after it, if perhaps in an older state, or will
    /// soon.
    bool hasOwnFile() const;
    /// False when a file of the entry is still there.
    bool removeFile();
    /// False when the file is not usable; why not is logged. The file is the entry's from now on:
    /// saving replaces it, removing removes it.
    bool readFromFile(const QString& path);
    orvelle::RecordFile& file() { return m_file; }

    /// Where member `index` keeps its thumbnail; empty outside the members.
    QString deviceThumbnailPath(int index) const;
    /// Where the picture of the entry itself is kept; empty when it has no name for one yet.
    QString thumbnailFile() const;
    /// The picture that the camera list shows. A group's is composed when it is not up to
    /// date (takes some 100 ms); empty when no member has one.
    QString thumbnailPath();
    /// The same picture for a worker, which brings it up to date with refreshThumbnail(). The
    /// entry counts as up to date from now on.
    orvelle::EntryThumbnail claimThumbnail();

    bool equals(const KvDeviceGroup* other) const;

private:
    orvelle::GroupRecord record() const;
    void ensureGroupId();

    orvelle::RecordFile m_file;
    mutable std::mutex m_mutex;  ///< guards everything below
    orvelle::GroupRecord m_record;
    QList<KvDevice*> m_devices;
    QStringList m_deviceUids;  ///< of m_devices, which need not be touched for them
    bool m_thumbnailReady = false;
};
