#include <QDebug>

#include "core/file_utils.h"
#include "device/device_group.h"
#include "device/entry_thumbnail.h"

namespace {

QString thumbnailOf(const QString& name) {
    return KvFileUtils::cachePath(name) + QStringLiteral("/thumb.jpg");
}

}  // namespace

QString KvDeviceGroup::deviceThumbnailPath(int index) const {
    QString uid;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        uid = m_deviceUids.value(index);
    }
    return uid.isEmpty() ? QString() : thumbnailOf(uid);
}

orvelle::EntryThumbnail KvDeviceGroup::claimThumbnail() {
    orvelle::EntryThumbnail thumbnail;
    const Record current = record();
    if (current.type == kSingleCamera) {
        thumbnail.path = deviceThumbnailPath(0);
        return thumbnail;
    }
    if (current.groupId < 1)
        return thumbnail;
    QStringList members;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        members = m_deviceUids;
        thumbnail.isStale = !m_thumbnailReady;
        m_thumbnailReady = true;
    }
    thumbnail.path = thumbnailOf(keyOf(current));
    qDebug().noquote() << "path =" << thumbnail.path;
    for (const QString& uid : std::as_const(members))
        thumbnail.memberPaths.append(thumbnailOf(uid));
    return thumbnail;
}

QString KvDeviceGroup::thumbnailPath() {
    const bool wasReady = isThumbnailReady();
    const orvelle::EntryThumbnail thumbnail = claimThumbnail();
    if (type() == kSingleCamera)
        return thumbnail.path;
    if (orvelle::refreshThumbnail(thumbnail))
        return thumbnail.path;
    setThumbnailReady(wasReady);
    return {};
}
