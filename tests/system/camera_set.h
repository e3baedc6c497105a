#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

#include "support/camera_process.h"

class KvDevice;

namespace orvelle::test {

/// Cameras, all connected through the device manager. Interface thread.
class CameraSet {
public:
    /// One process with one picture for all, or, as real cameras are, each by itself and out of
    /// step with the others.
    enum class Processes { kOne, kEach };

    /// `uid` is the first camera's; several get the endings 01, 02, ... `arguments` say what
    /// the cameras send.
    CameraSet(const QString& uid, int count, const QStringList& arguments,
              Processes processes = Processes::kOne);
    ~CameraSet();  ///< closes the devices, then the cameras

    /// Starts the cameras and waits until every device is online; false after 30 s.
    bool connectAll();
    const std::vector<KvDevice*>& devices() const { return m_devices; }
    /// The first one.
    CameraProcess& process() { return *m_processes.front(); }
    /// CPU seconds that all processes have used so far.
    double cpuSeconds() const;

private:
    const QStringList m_uids;
    std::vector<std::unique_ptr<CameraProcess>> m_processes;
    std::vector<KvDevice*> m_devices;  ///< owned by the manager
};

/// Runs the event loop until `done` or for `timeoutMs`; whether it is done.
template <class Condition>
bool waitUntil(int timeoutMs, Condition done) {
    const QDeadlineTimer deadline(timeoutMs);
    while (!done() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    return done();
}

/// Lets the event loop run for `ms`.
void runFor(int ms);

}  // namespace orvelle::test
