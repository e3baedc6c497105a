#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace orvelle {

class FileWriter;

/// The one file of a record, a camera's or a list entry's: "<name>.xml" in the folder of its kind.
///
/// It remembers the file that the record came from, whatever that is called: saving replaces that
/// one, removing removes it. Any thread.
class RecordFile {
public:
    /// `kind` names the folder, "KvTUTK" or "KvTUTKGroup".
    explicit RecordFile(const QString& kind);
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    /// Who writes what nobody waits for; borrowed. Null, as at first: whoever calls, at once.
    void setWriter(FileWriter* writer);

    /// The record was read from there.
    void setFound(const QString& path);
    /// Whether the record stands in the file of that name, if perhaps in an older state, or will
    /// soon.
    bool isNamed(const QString& name) const;

    /// Waits for the disk; false when the file cannot be written.
    bool write(const QString& name, const QByteArray& bytes);
    /// The same without waiting: whether the writer says later that it failed. False only without
    /// a writer.
    bool writeLater(const QString& name, const QByteArray& bytes);
    /// Also a file of that name; false when a file of the record is still there.
    bool remove(const QString& name);

    /// Whether the record was read from a file that is older than that of the other.
    bool isOlderThan(const RecordFile& other) const;
    /// Gives the file that the record came from another ending, so that it is not read again, with
    /// one line in the log.
    void setAside();

private:
    struct Paths;

    QString pathOf(const QString& name) const;

    const QString m_kind;
    const std::shared_ptr<Paths> m_paths;  ///< shared with what still waits to be written
};

/// Keeps the newest of the records that are the same by `isSame` and sets the files of the others
/// aside. A record has `file()`.
template <class Record, class IsSame>
void keepNewest(std::vector<std::unique_ptr<Record>>& records, IsSame isSame) {
    for (size_t i = 0; i < records.size(); ++i) {
        for (size_t j = i + 1; j < records.size();) {
            if (!isSame(*records[i], *records[j])) {
                ++j;
                continue;
            }
            if (records[i]->file().isOlderThan(records[j]->file()))
                records[i].swap(records[j]);
            records[j]->file().setAside();
            records.erase(records.begin() + static_cast<std::ptrdiff_t>(j));
        }
    }
}

}  // namespace orvelle
