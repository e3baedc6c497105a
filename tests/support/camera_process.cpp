#include "support/camera_process.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

#include "support/process_probe.h"

namespace orvelle::test {

namespace {

constexpr int kStartTimeoutMs = 20000;
constexpr int kEndTimeoutMs = 10000;

int camerasWanted(const QStringList& arguments) {
    const int option = arguments.indexOf(QStringLiteral("--cameras"));
    return option < 0 ? 1 : arguments.value(option + 1).toInt();
}

}  // namespace

CameraProcess::CameraProcess(QStringList arguments) : m_arguments(std::move(arguments)) {
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ORVELLE_CAMERA_PASSWORD"), QLatin1String(kPassword));
    m_process.setProcessEnvironment(environment);
}

CameraProcess::~CameraProcess() {
    kill();
}

bool CameraProcess::start() {
    const QString program =
        QCoreApplication::applicationDirPath() + QStringLiteral("/orvelle-camera");
    m_process.start(
        program, m_arguments + QStringList{QStringLiteral("--bind"), QStringLiteral("127.0.0.1")});
    int ready = 0;
    const QDeadlineTimer deadline(kStartTimeoutMs);
    while (ready < camerasWanted(m_arguments) && !deadline.hasExpired()) {
        if (!m_process.canReadLine() &&
            !m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            break;
        while (m_process.canReadLine())
            ready += m_process.readLine().startsWith("Port:") ? 1 : 0;
    }
    return ready == camerasWanted(m_arguments);
}

void CameraProcess::kill() {
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(kEndTimeoutMs);
}

int CameraProcess::terminate() {
    m_process.terminate();
    if (!m_process.waitForFinished(kEndTimeoutMs) || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

bool CameraProcess::waitForLine(const char* words, int timeoutMs) {
    const QDeadlineTimer deadline(timeoutMs);
    for (;;) {
        while (m_process.canReadLine()) {
            if (m_process.readLine().contains(words))
                return true;
        }
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return false;
    }
}

double CameraProcess::residentMib() const {
    return residentMibOf(m_process.processId());
}

double CameraProcess::cpuSeconds() const {
    return cpuSecondsOf(m_process.processId());
}

}  // namespace orvelle::test
