#include "device/entry_thumbnail.h"

#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>
#include <QSaveFile>

#include <algorithm>

namespace orvelle {

namespace {

constexpr int kColumns = 2;
constexpr int kQuarters = 4;
constexpr QSize kQuarterSize(960, 540);
// A damaged or foreign file may claim any size; the cameras' own are far below.
constexpr int kMaxSide = 8192;

QImage loadQuarter(const QString& path) {
    // The reader would complain about it.
    if (!QFileInfo::exists(path))
        return {};
    QImageReader reader(path);
    const QSize size = reader.size();
    if (size.isEmpty() || size.width() > kMaxSide || size.height() > kMaxSide)
        return {};
    reader.setScaledSize(kQuarterSize);
    return reader.read();
}

bool save(const QImage& image, const QString& path) {
    QSaveFile file(path);
    // An error at the buffer's last flush would not reach commit().
    return file.open(QIODevice::WriteOnly) &&
           file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
           image.save(&file, "JPEG") && file.flush() && file.commit();
}

bool compose(const QStringList& memberPaths, const QString& path) {
    QFile::remove(path);
    QImage image(kQuarterSize * kColumns, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    bool isEmpty = true;
    for (int i = 0; i < std::min(kQuarters, memberPaths.size()); ++i) {
        const QImage quarter = loadQuarter(memberPaths[i]);
        if (quarter.isNull())
            continue;
        const QPoint corner(i % kColumns * kQuarterSize.width(),
                            i / kColumns * kQuarterSize.height());
        painter.drawImage(QRect(corner, kQuarterSize), quarter);
        isEmpty = false;
    }
    painter.end();
    return !isEmpty && save(image, path);
}

bool isOlderThanAMember(const QFileInfo& file, const QStringList& memberPaths) {
    return std::any_of(memberPaths.begin(), memberPaths.end(), [&file](const QString& path) {
        const QFileInfo member(path);
        return member.exists() && member.lastModified() > file.lastModified();
    });
}

}  // namespace

bool refreshThumbnail(const EntryThumbnail& thumbnail) {
    const QFileInfo file(thumbnail.path);
    const bool exists = !thumbnail.path.isEmpty() && file.exists();
    // A camera's picture is the camera's own; a stale one of a group without members goes.
    if (thumbnail.path.isEmpty() || (thumbnail.memberPaths.isEmpty() && !thumbnail.isStale))
        return exists;
    const QStringList shown = thumbnail.memberPaths.mid(0, kQuarters);
    if (exists && !thumbnail.isStale && !isOlderThanAMember(file, shown))
        return true;
    return compose(shown, thumbnail.path);
}

}  // namespace orvelle
