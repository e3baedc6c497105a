#pragma once

#include <QString>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/folder_identity.h"

namespace orvelle {

/// Recordings that follow each other minute by minute.
struct RecordingRun {
    int64_t startSec = 0;  ///< since 1970, UTC
    uint32_t minutes = 0;
};

struct CardSpace {
    int64_t totalBytes = 0;  ///< 0: no card
    int64_t freeBytes = 0;
};

/// A card at a glance.
struct CardOverview {
    bool isPresent = false;
    bool isWritable = false;
    bool isFull = false;    ///< nothing more fits, and nothing can be removed
    int64_t oldestSec = 0;  ///< start of a recording, 0 without any
    int64_t newestSec = 0;
    /// In order, the first and the last start of each day of UTC.
    std::vector<int64_t> daySec;
};

/// One recording.
struct Recording {
    int64_t startSec = 0;
    QString path;
    bool isUnfinished = false;  ///< still being written
};

/// A directory that serves as a memory card: the recordings in it, within a quota.
///
/// The card's thread works on the disk; all others are served from memory. Only files with a
/// recording's name are ever read or removed. A directory that is missing counts as no card until
/// it is back; one that cannot be written can be played all the same. Each fault is logged once
/// until a recording succeeds.
class CardStore {
public:
    CardStore(QString directory, int64_t quotaBytes);

    // --- any thread ---

    bool isPresent() const;
    bool isWritable() const;
    CardSpace space() const;
    CardOverview overview() const;
    /// Of the recordings that start within [fromSec, toSec], in order of time.
    std::vector<RecordingRun> runs(int64_t fromSec, int64_t toSec) const;
    /// The recording of that moment.
    std::optional<Recording> find(int64_t atSec) const;

    // --- card thread ---

    enum class Presence { kAbsent, kSame, kNew };
    /// Looks at the directory. kNew: it came, came back or is another one, and was read anew;
    /// what a crash left unfinished was kept where it can be played, else removed.
    Presence refresh();
    /// Removes the oldest recordings until `bytes` more fit; false when they cannot.
    bool makeRoom(int64_t bytes);
    QString unfinishedPath(int64_t startSec) const;
    /// The unfinished recording of that second is there and counts as one from now on.
    void begin(int64_t startSec);
    /// It is given up.
    void forget(int64_t startSec);
    /// An unfinished recording is complete; false when it is not there.
    bool finish(int64_t startSec);
    /// It could not be written: what can be played of it is kept.
    void fail(int64_t startSec, const QString& reason);
    /// Removes all recordings; false when something is left.
    bool format();

private:
    void readDirectory();
    void recover(int64_t startSec);
    bool keep(int64_t startSec);
    int64_t usedBytes() const;
    bool removeOldest();
    void updateSpace();
    void complain(const QString& fault);
    QString pathOf(const QString& name) const;

    const QString m_directory;
    const int64_t m_quotaBytes;

    // Owned by the card thread.
    FolderIdentity m_identity;
    bool m_isFaultLogged = false;

    mutable std::mutex m_mutex;  ///< guards the fields below
    bool m_isPresent = false;
    bool m_isWritable = false;
    bool m_isFull = false;
    std::map<int64_t, int64_t> m_bytes;  ///< of each recording, by its start
    int64_t m_usedBytes = 0;
    std::optional<int64_t> m_unfinished;  ///< the recording that is being written, of m_bytes
    CardSpace m_space;
};

}  // namespace orvelle
