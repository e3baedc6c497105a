#include "device/media_folder_names.h"

#include <QFile>

#include <utility>

#include "core/configure.h"
#include "core/file_utils.h"
#include "core/thread.h"
#include "device/camera_record.h"
#include "device/logging.h"

namespace orvelle {

namespace {

constexpr int kEndWaitMs = 2000;

/// As it is set; the folder may not be there, and nobody waits for its disk.
QString mediaRoot() {
    const QString chosen = KvConfigure().getString(settings::kMediaRoot, {});
    return chosen.isEmpty() ? KvFileUtils::dataRoot() : chosen;
}

void writeName(const QString& folder, const QByteArray& text) {
    if (!KvFileUtils::exists(folder))
        return;
    QFile file(folder + QLatin1Char('/') + QLatin1String(MediaFolderNames::kFileName));
    if (file.open(QIODevice::ReadOnly | QIODevice::Text) && file.readAll() == text)
        return;
    file.close();
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text) || file.write(text) != text.size() ||
        !file.flush())
        qCInfo(lcDevice) << "cannot write" << file.fileName() << ":" << file.errorString();
}

}  // namespace

class MediaFolderNames::Thread : public KvThread {
public:
    Thread() : KvThread(QStringLiteral("folder-names")) {}

    void add(const QString& folder, const QByteArray& text) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_texts.insert(folder, text);
        m_changed.notify_all();
    }

    void stop() override {
        KvThread::stop();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_changed.notify_all();
    }

    void run() override {
        QString folder;
        QByteArray text;
        while (take(folder, text))
            writeName(folder, text);
    }

private:
    bool take(QString& folder, QByteArray& text) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return isStopped() || !m_texts.isEmpty(); });
        if (m_texts.isEmpty())
            return false;
        folder = m_texts.firstKey();
        text = m_texts.take(folder);
        return true;
    }

    std::mutex m_mutex;  ///< guards m_texts
    std::condition_variable m_changed;
    QMap<QString, QByteArray> m_texts;  ///< that wait, by folder
};

MediaFolderNames::MediaFolderNames() : m_thread(std::make_unique<Thread>()) {
    m_thread->start();
}

MediaFolderNames::~MediaFolderNames() {
    m_thread->stop();
    if (!m_thread->waitForEnd(kEndWaitMs))
        static_cast<void>(m_thread.release());
}

void MediaFolderNames::set(const QString& uid, const QString& name) {
    if (isUsableUid(uid))
        m_thread->add(mediaRoot() + QLatin1Char('/') + uid,
                      (name + QLatin1Char('\n') + uid + QLatin1Char('\n')).toUtf8());
}

}  // namespace orvelle
