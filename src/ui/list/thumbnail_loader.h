#pragma once

#include <QCache>
#include <QObject>
#include <QPixmap>
#include <QSet>

#include <memory>

#include "device/entry_thumbnail.h"

class QImage;

namespace orvelle {

class ThumbnailThread;

/// The thumbnails of a list, read (and composed) on a thread of its own. Interface thread.
///
/// Pictures are scaled to the width of the list's items and kept until the file has changed. What
/// was asked for last is read first: that is what stands on the screen.
class ThumbnailLoader : public QObject {
    Q_OBJECT
public:
    /// `width` in logical pixels.
    explicit ThumbnailLoader(int width, QObject* parent = nullptr);
    ~ThumbnailLoader() override;

    /// What is known of the file so far, or the picture that stands for none.
    QPixmap pixmap(const QString& path) const;
    /// Reads the file unless it is known as it is.
    void request(const EntryThumbnail& thumbnail);

signals:
    /// pixmap() has changed.
    void changed(const QString& path);

private:
    static QPixmap makeDefault(int width);
    void take(const QString& path, const QImage& image);

    const int m_width;
    const QPixmap m_default;
    QCache<QString, QPixmap> m_pixmaps;  ///< by path
    QSet<QString> m_readable;            ///< paths whose pixmap may have left the cache
    std::unique_ptr<ThumbnailThread> m_thread;
};

}  // namespace orvelle
