#include "core/file_writer.h"

#include "core/thread.h"
#include "core/wipe.h"

#include <QLoggingCategory>
#include <QSaveFile>

#include <algorithm>
#include <utility>

namespace orvelle {

static Q_LOGGING_CATEGORY(lcFiles, "orvelle.core.files")

    bool writePrivateFile(const QString& path, const QByteArray& bytes) {
    QSaveFile file(path);
    // An error at the buffer's last flush would not reach commit().
    if (file.open(QIODevice::WriteOnly) &&
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
        file.write(bytes) == bytes.size() && file.flush() && file.commit())
        return true;
    qCWarning(lcFiles) << "cannot write" << path << ":" << file.errorString();
    return false;
}

class FileWriter::Thread : public KvThread {
public:
    explicit Thread(FileWriter& writer)
        : KvThread(QStringLiteral("file-writer")), m_writer(writer) {}
    void run() override { m_writer.run(); }

private:
    FileWriter& m_writer;
};

FileWriter::FileWriter(std::function<void()> failed)
    : m_failed(std::move(failed)), m_thread(std::make_unique<Thread>(*this)) {
    m_thread->start();
}

FileWriter::~FileWriter() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread->waitForEnd();
}

void FileWriter::write(const QString& path, const QByteArray& bytes,
                       std::function<void()> written) {
    add({path, bytes, {}, std::move(written)});
}

void FileWriter::run(const QString& path, std::function<bool()> job) {
    add({path, {}, std::move(job), {}});
}

void FileWriter::add(Task task) {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        drop(task.path);
        m_waiting.push_back(std::move(task));
    }
    m_changed.notify_all();
}

void FileWriter::forget(const QString& path) {
    std::unique_lock<std::mutex> lock(m_mutex);
    drop(path);
    m_changed.wait(lock, [this, &path] { return m_writing != path; });
}

void FileWriter::finish() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waiting.empty() && m_writing.isEmpty(); });
}

void FileWriter::drop(const QString& path) {
    const auto isOfOtherPath = [&path](const Task& task) { return task.path != path; };
    const auto dropped = std::stable_partition(m_waiting.begin(), m_waiting.end(), isOfOtherPath);
    std::for_each(dropped, m_waiting.end(), [](Task& task) { wipe(task.bytes); });
    m_waiting.erase(dropped, m_waiting.end());
}

void FileWriter::run() {
    Task task;
    while (takeTask(task)) {
        if (!carryOut(task))
            m_failed();
        else if (task.written)
            task.written();
        wipe(task.bytes);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_writing.clear();
        }
        m_changed.notify_all();
    }
}

bool FileWriter::carryOut(const Task& task) {
    return task.job ? task.job() : writePrivateFile(task.path, task.bytes);
}

bool FileWriter::takeTask(Task& task) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
    if (m_waiting.empty())
        return false;
    task = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_writing = task.path;
    return true;
}

}  // namespace orvelle
