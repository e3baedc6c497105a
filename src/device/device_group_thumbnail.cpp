#include <QDebug>
#include <QFile>
#include <QImageReader>
#include <QPainter>

#include "core/file_utils.h"
#include "device/device_group.h"

namespace {

constexpr int kColumns = 2;
constexpr int kQuarters = 4;
constexpr QSize kQuarterSize(960, 540);
// A damaged or foreign file may claim any size; the cameras' own are far below.
constexpr int kMaxSide = 8192;

QString thumbnailOf(const QString& name) {
    return KvFileUtils::cachePath(name) + QStringLiteral("/thumb.jpg");
}

QImage loadQuarter(const QString& path) {
    QImageReader reader(path);
    const QSize size = reader.size();
    if (size.isEmpty() || size.width() > kMaxSide || size.height() > kMaxSide)
        return {};
    reader.setScaledSize(kQuarterSize);
    return reader.read();
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

QString KvDeviceGroup::thumbnailPath() {
    const Record current = record();
    if (current.type == kSingleCamera)
        return deviceThumbnailPath(0);
    if (current.groupId < 1)
        return {};
    const QString path = thumbnailOf(keyOf(current));
    qDebug().noquote() << "path =" << path;
    if (isThumbnailReady() && QFile::exists(path))
        return path;
    if (!composeThumbnail(path))
        return {};
    setThumbnailReady(true);
    return path;
}

bool KvDeviceGroup::composeThumbnail(const QString& path) const {
    QFile::remove(path);
    QImage image(kQuarterSize * kColumns, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    bool isEmpty = true;
    for (int i = 0; i < kQuarters; ++i) {
        const QImage quarter = loadQuarter(deviceThumbnailPath(i));
        if (quarter.isNull())
            continue;
        const QPoint corner(i % kColumns * kQuarterSize.width(),
                            i / kColumns * kQuarterSize.height());
        painter.drawImage(QRect(corner, kQuarterSize), quarter);
        isEmpty = false;
    }
    painter.end();
    return !isEmpty && image.save(path);
}
