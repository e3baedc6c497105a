#pragma once

#include <QMap>
#include <QString>

#include <condition_variable>
#include <memory>
#include <mutex>

namespace orvelle {

/// Puts a small text file into each camera's media folder, which is named after the UID, so that a
/// person finds the camera's pictures: its name and its UID. Media folders may lie on a share that
/// hangs, so a thread of its own does it, and nobody minds when it fails.
class MediaFolderNames {
public:
    /// The file in the folder.
    static constexpr char kFileName[] = "Camera.txt";

    MediaFolderNames();
    /// Waits for what is under way, but not for a share that hangs.
    ~MediaFolderNames();
    MediaFolderNames(const MediaFolderNames&) = delete;
    MediaFolderNames& operator=(const MediaFolderNames&) = delete;

    /// Returns at once. A camera without a media folder gets none. Any thread.
    void set(const QString& uid, const QString& name);

private:
    class Thread;

    std::unique_ptr<Thread> m_thread;
};

}  // namespace orvelle
