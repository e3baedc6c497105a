#include "update/installer_thread.h"

#include "platform/held_file.h"
#include "platform/run_file.h"
#include "update/file_sums.h"
#include "update/update_log.h"

namespace orvelle {

namespace {

constexpr int kPieceBytes = 1 << 20;

/// False when stopped, and when the disk fails.
bool addAll(HeldFile& file, FileSums& sums, const KvThread& thread) {
    QByteArray piece(kPieceBytes, Qt::Uninitialized);
    while (!thread.isStopped()) {
        piece.resize(kPieceBytes);
        const int count = file.read(piece.data(), kPieceBytes);
        if (count <= 0)
            return count == 0;
        piece.resize(count);
        sums.add(piece);
    }
    return false;
}

}  // namespace

InstallerThread::InstallerThread(const QString& path, const InstallerProof& proof, Task task)
    : KvThread(QStringLiteral("check-update")), m_path(path), m_proof(proof), m_task(task) {}

InstallerThread::~InstallerThread() {
    stop();
    waitForEnd();
}

void InstallerThread::run() {
    HeldFile file(m_path.toStdString());
    FileSums sums;
    if (!file.isHeld() || !addAll(file, sums, *this) || !m_proof.isOf(sums) ||
        !file.isUnchanged()) {
        if (!isStopped())
            qCWarning(lcUpdate) << m_path << "is not the installer that was signed";
        return;
    }
    const bool isDone = m_task == Task::kCheck || runFile(m_path.toStdString());
    m_outcome = isDone ? Outcome::kGenuine : Outcome::kNotStarted;
}

}  // namespace orvelle
