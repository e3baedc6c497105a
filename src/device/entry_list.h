#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "device/device_group.h"

class KvDevice;

namespace orvelle {

class FileWriter;

/// The entries of the camera list with their places and their files. A camera's entry is named
/// after its UID and a group's after its number, which share one folder, as their pictures do: so
/// no group has a number that is the UID of a camera, and one that has it gets another.
///
/// Any thread; who reads an entry makes sure that nobody takes it away meanwhile.
class EntryList {
public:
    using FindDevice = std::function<KvDevice*(const QString& uid)>;

    /// `writer` is borrowed and writes the entries' files.
    EntryList(FindDevice findDevice, FileWriter& writer);

    /// Reads the entries of a folder, and makes those that cameras miss.
    void load(const QString& directory, const QList<KvDevice*>& devices);

    QList<KvDeviceGroup*> all() const;
    bool contains(const KvDeviceGroup* group) const;
    KvDeviceGroup* find(const KvDevice* device) const;
    /// Takes the entry only when no equal one is listed, then reorders; true when taken.
    bool add(std::unique_ptr<KvDeviceGroup>&& group);
    [[nodiscard]] std::unique_ptr<KvDeviceGroup> take(const KvDeviceGroup* group);
    /// Sorts by groupIndex, numbers from 0 and saves what moved without waiting for the disk.
    void reorder();
    /// Looks every entry's members up anew.
    void resolveMembers();
    /// Gives a group whose number is that UID another number. Waits for the disk; false when it
    /// cannot be saved.
    bool makeRoomFor(const QString& uid);

private:
    void addMissing(const QList<KvDevice*>& devices);
    void keepCounterAhead() const;
    void sort();
    void resolve(KvDeviceGroup& group) const;
    KvDeviceGroup* renumberGroupNamed(const QString& uid);
    int freeId() const;

    const FindDevice m_findDevice;
    FileWriter& m_writer;
    QStringList m_foundNames;    ///< of the files that were there at load(), readable or not; fixed
    mutable std::mutex m_mutex;  ///< guards m_entries
    std::vector<std::unique_ptr<KvDeviceGroup>> m_entries;
};

}  // namespace orvelle
