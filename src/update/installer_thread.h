#pragma once

#include <QString>

#include "core/thread.h"
#include "update/installer.h"

namespace orvelle {

/// Reads a file that stands on the disk as an installer, checks that it is the one that was signed,
/// and runs it where it is told to: while it is still held against any change. The owner listens to
/// finished().
class InstallerThread : public KvThread {
public:
    enum class Task { kCheck, kCheckAndRun };
    enum class Outcome {
        kWrongFile,   ///< not there, not readable, not the signed one, or being changed
        kGenuine,     ///< and run, if that was the task
        kNotStarted,  ///< genuine, but the system could not run it
    };

    InstallerThread(const QString& path, const InstallerProof& proof, Task task);
    ~InstallerThread() override;  ///< stops and waits: for a piece of a file at most

    void run() override;
    /// Once it has ended.
    Outcome outcome() const { return m_outcome; }

private:
    const QString m_path;
    const InstallerProof m_proof;
    const Task m_task;
    Outcome m_outcome = Outcome::kWrongFile;  ///< the worker's until it has ended
};

}  // namespace orvelle
