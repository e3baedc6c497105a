#include "ui/preview/folder_search.h"

#include "core/file_utils.h"

namespace orvelle {

class FolderSearch::Thread : public KvThread {
public:
    Thread(FolderOf folderOf, const QString& uid)
        : KvThread(QStringLiteral("media-folder")), m_uid(uid), m_folderOf(folderOf) {}

    void run() override {
        m_folder = m_folderOf(m_uid);
        m_exists = KvFileUtils::exists(m_folder);
    }

    const QString m_uid;
    // Written by the thread, read once it has ended.
    QString m_folder;
    bool m_exists = false;

private:
    const FolderOf m_folderOf;
};

FolderSearch::FolderSearch(QObject* parent) : QObject(parent) {}

FolderSearch::~FolderSearch() {
    if (!m_thread || m_thread->isFinished())
        return;
    disconnect(m_thread.get(), nullptr, this, nullptr);
    // It deletes itself when the share answers.
    connect(m_thread.get(), &QThread::finished, m_thread.get(), &QObject::deleteLater);
    static_cast<void>(m_thread.release());
}

void FolderSearch::start(FolderOf folderOf, const QString& uid) {
    if (m_thread)
        return;
    m_thread = std::make_unique<Thread>(folderOf, uid);
    connect(m_thread.get(), &QThread::finished, this, &FolderSearch::finish);
    m_thread->start();
}

void FolderSearch::finish() {
    if (!m_thread)
        return;
    m_thread->waitForEnd();
    const std::unique_ptr<Thread> ended = std::move(m_thread);
    emit found(ended->m_uid, ended->m_folder, ended->m_exists);
}

}  // namespace orvelle
