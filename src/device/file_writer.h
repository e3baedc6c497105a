#pragma once

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace orvelle {

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

    /// Returns at once. What still waits for the same file is not written any more.
    void write(const QString& path, const QByteArray& bytes);
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
    };

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
