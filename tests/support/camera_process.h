#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace orvelle::test {

/// The real camera program as a child process on loopback. One thread, which needs no event loop.
class CameraProcess {
public:
    static constexpr char kPassword[] = "camera-test-password";

    /// `arguments` besides the address: "--uid", "--demo", ...
    explicit CameraProcess(QStringList arguments);
    ~CameraProcess();  ///< kills
    CameraProcess(const CameraProcess&) = delete;
    CameraProcess& operator=(const CameraProcess&) = delete;

    /// Waits until the last of its cameras is ready; false when it ended or took 20 s. May be
    /// called again after the process has ended.
    bool start();
    /// Ends it without a goodbye.
    void kill();
    /// Asks for an orderly end; its exit code, or -1 when it took over 10 s.
    int terminate();

    /// Waits until one of its cameras says a line with these words, as " connected" or " left" of a
    /// client; false when none did in time.
    bool waitForLine(const char* words, int timeoutMs);

    /// CPU seconds that the process has used so far.
    double cpuSeconds() const;
    /// Its resident memory now.
    double residentMib() const;

private:
    const QStringList m_arguments;
    QProcess m_process;
};

}  // namespace orvelle::test
