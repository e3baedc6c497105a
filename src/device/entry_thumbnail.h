#pragma once

#include <QString>
#include <QStringList>

namespace orvelle {

/// Where a list entry's picture is and what it is made of: all that a worker needs to bring it
/// up to date without touching the entry.
struct EntryThumbnail {
    QString path;             ///< empty when the entry has no place for one
    QStringList memberPaths;  ///< of a group: the members' pictures, in order; a camera: none
    bool isStale = false;     ///< a group's members have changed since it was composed
};

/// Composes a group's picture when it is stale, missing or older than a member's; takes some
/// 100 ms then. False when there is no picture. Any thread.
bool refreshThumbnail(const EntryThumbnail& thumbnail);

}  // namespace orvelle
