#pragma once

#include <QHash>
#include <QImage>
#include <QString>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <vector>

#include "core/thread.h"
#include "device/entry_thumbnail.h"

namespace orvelle {

/// Reads the picture files of a list, the latest request first. Owned by ThumbnailLoader.
class ThumbnailThread : public KvThread {
public:
    /// Called on this thread; a null image stands for a file that is missing or no picture.
    using Callback = std::function<void(const QString& path, const QImage& image)>;

    /// `width` in pixels of the screen.
    ThumbnailThread(int width, Callback callback);

    void run() override;
    void stop() override;

    /// Any thread. A request for a path that still waits is replaced.
    void request(const EntryThumbnail& thumbnail);
    /// The file is to be read again even if it has not changed. Any thread.
    void forget(const QString& path);

private:
    /// What tells whether a file has changed; a missing one is all zero.
    struct Version {
        qint64 modifiedMs = 0;
        qint64 bytes = 0;
        bool operator==(const Version& other) const {
            return modifiedMs == other.modifiedMs && bytes == other.bytes;
        }
    };

    static Version versionOf(const QString& path);
    bool waitForRequest(EntryThumbnail& request);
    bool isNew(const QString& path, const Version& version);
    void serve(const EntryThumbnail& request);

    const int m_width;
    const Callback m_callback;

    std::mutex m_requestMutex;  ///< guards the two below
    std::vector<EntryThumbnail> m_requests;
    QHash<QString, Version> m_known;  ///< of the files that were read
    std::condition_variable m_requestSignal;
};

/// The JPEG file scaled to `width`; null when it is none, or too big to be one of ours.
QImage readThumbnail(const QString& path, int width);

}  // namespace orvelle
