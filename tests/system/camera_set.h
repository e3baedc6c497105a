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

/// Cameras of one process, all connected through the device manager. Interface thread.
class CameraSet {
public:
    /// `uid` is the first camera's; several get the endings 01, 02, ... `arguments` say what
    /// the cameras send.
    CameraSet(const QString& uid, int count, QStringList arguments);
    ~CameraSet();  ///< closes the devices, then the cameras

    /// Starts the cameras and waits until every device is online; false after 30 s.
    bool connectAll();
    const std::vector<KvDevice*>& devices() const { return m_devices; }
    CameraProcess& process() { return m_process; }

private:
    const QStringList m_uids;
    CameraProcess m_process;
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
