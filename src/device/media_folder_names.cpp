#include "device/media_folder_names.h"

#include <QFile>

#include <utility>

#include "core/file_utils.h"
#include "core/thread.h"
#include "device/camera_record.h"
#include "device/logging.h"

namespace orvelle {

namespace {

constexpr int kEndWaitMs = 2000;

void writeName(const QString& uid, const QString& name) {
    const QString folder = KvFileUtils::mediaRoot() + QLatin1Char('/') + uid;
    if (!isUsableUid(uid) || !KvFileUtils::exists(folder))
        return;
    const QByteArray text = (name + QLatin1Char('\n') + uid + QLatin1Char('\n')).toUtf8();
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

    void add(const QString& uid, const QString& name) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_names.insert(uid, name);
        m_changed.notify_all();
    }

    void stop() override {
        KvThread::stop();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_changed.notify_all();
    }

    void run() override {
        QString uid;
        QString name;
        while (take(uid, name))
            writeName(uid, name);
    }

private:
    bool take(QString& uid, QString& name) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return isStopped() || !m_names.isEmpty(); });
        if (m_names.isEmpty())
            return false;
        uid = m_names.firstKey();
        name = m_names.take(uid);
        return true;
    }

    std::mutex m_mutex;  ///< guards m_names
    std::condition_variable m_changed;
    QMap<QString, QString> m_names;  ///< that wait, by UID
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
    m_thread->add(uid, name);
}

}  // namespace orvelle
