#pragma once

#include <QObject>
#include <QString>

#include <memory>

#include "core/thread.h"

namespace orvelle {

/// Looks for a camera's media folder on a thread of its own, since it may lie on a share that does
/// not answer. Interface thread.
class FolderSearch : public QObject {
    Q_OBJECT
public:
    using FolderOf = QString (*)(const QString& uid);

    explicit FolderSearch(QObject* parent = nullptr);
    /// A search that hangs is left to itself.
    ~FolderSearch() override;

    bool isRunning() const { return m_thread != nullptr; }
    /// Makes the folder where it can; found() follows. Nothing while a search runs.
    void start(FolderOf folderOf, const QString& uid);

signals:
    void found(const QString& uid, const QString& folder, bool exists);

private:
    void finish();

    class Thread;
    std::unique_ptr<Thread> m_thread;
};

}  // namespace orvelle
