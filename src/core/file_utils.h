#pragma once

#include <QObject>
#include <QString>

/// The directory layout below the per-user data directory and below the media directory.
///
/// The application creates the one object at start-up and destroys it at exit; it holds no state,
/// so the operations are class-wide and work from any thread and before it exists. Each path
/// operation creates the directories up to its path and returns the path even where that failed.
/// The program's own directories are closed to other users; those below the media directory are as
/// the user's system makes them.
class KvFileUtils : public QObject {
    Q_OBJECT

public:
    explicit KvFileUtils(QObject* parent = nullptr);
    ~KvFileUtils() override;

    /// Null before start-up and after exit.
    static KvFileUtils* instance();

    static QString dataRoot();
    /// Where a log goes that names no file of its own.
    static QString logFilePath() { return dataRoot() + QStringLiteral("/Orvelle.log"); }
    static QString cachePath();
    static QString cachePath(const QString& name);
    static QString configurePath();
    static QString devicesPath();
    static QString devicesPath(const QString& name);
    static QString updatePath();
    /// The directory that the user chose, or the data root.
    static QString mediaRoot();
    static QString mediaPath(const QString& uid);
    static QString screenshotPath(const QString& uid);
    static QString videoPath(const QString& uid);

    /// Takes the rights of other users on the program's own directories and what is in them away,
    /// as an earlier version or a copy may have left them. Symbolic links are not followed. Waits
    /// for the disk.
    static void closeToOthers();

    /// Whether the directory exists.
    static bool exists(const QString& path);
    /// True when the directory exists or was created, parents included.
    static bool mkdir(const QString& path);
    static bool fileExists(const QString& path);
    static bool removeFile(const QString& path);
    /// Waits until the file's bytes are on its disk; false when that cannot be promised.
    static bool syncFile(const QString& path);
    /// Back to the data root; whether another one was set.
    static bool resetMediaRoot();
    /// Shows a directory in the system's file browser without waiting for it; false when there
    /// is no such directory or no browser could be started.
    static bool openFolder(const QString& path);
};
