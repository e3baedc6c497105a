#pragma once

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace orvelle {

/// Replaces the file as a whole, readable by its owner only, and returns once it is on the disk.
/// False, with one line in the log, when it cannot be written; the old one is kept then.
bool writePrivateFile(const QString& path, const QByteArray& bytes);

/// Writes files on a thread of its own, one after the other, so that a slow disk holds up nobody
/// else. All calls from any thread.
class FileWriter {
public:
    /// `failed` is called on the writer's thread for each file that could not be written.
    explicit FileWriter(std::function<void()> failed);
    /// Writes what still waits.
    ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    /// Returns at once. What still waits for the same file is not written any more. `written` is
    /// called on the writer's thread once the file is there.
    void write(const QString& path, const QByteArray& bytes, std::function<void()> written = {});
    /// The same for a file that `job` writes; it returns false when it could not.
    void run(const QString& path, std::function<bool()> job);
    /// Returns once nothing is written to this file, nor will be: whoever now writes or removes it
    /// has the last word.
    void forget(const QString& path);
    /// Returns once nothing waits.
    void finish();

private:
    class Thread;
    struct Task {
        QString path;
        QByteArray bytes;
        std::function<bool()> job;  ///< in place of the bytes
        std::function<void()> written;
    };

    static bool carryOut(const Task& task);
    void add(Task task);
    void run();
    bool takeTask(Task& task);
    void drop(const QString& path);

    const std::function<void()> m_failed;
    std::mutex m_mutex;  ///< guards the next three
    std::deque<Task> m_waiting;
    QString m_writing;  ///< empty between two files
    bool m_isEnding = false;
    std::condition_variable m_changed;
    std::unique_ptr<Thread> m_thread;
};

}  // namespace orvelle
