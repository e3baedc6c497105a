#pragma once

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

#include "support/tone.h"

namespace orvelle::test {

/// A sound server of the test's own, with one sink that plays to nobody. Takes the process's
/// sound when made before the first device is used.
class SoundServer {
public:
    SoundServer() {
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(address()));
        m_environment.insert(QStringLiteral("HOME"), m_dir.path());
        m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_dir.path());
    }
    ~SoundServer() {
        if (m_process)
            kill(*m_process);
    }

    /// Starts a server; one that runs already dies once the new one has taken its address.
    bool start() {
        const QString socket = address() + QString::number(++m_starts);
        auto next = std::make_unique<QProcess>();
        next->setProcessEnvironment(m_environment);
        next->setStandardErrorFile(QProcess::nullDevice());
        const QString arguments =
            QStringLiteral(
                "-n;--daemonize=no;--exit-idle-time=-1;--use-pid-file=no;-L;module-null-sink "
                "sink_name=desk rate=48000 channels=2;-L;module-native-protocol-unix "
                "auth-anonymous=1 socket=") +
            socket;
        next->start(QStringLiteral("pulseaudio"), arguments.split(QLatin1Char(';')));
        const QDeadlineTimer deadline(20'000);
        while (next->waitForStarted() && streamCount(socket) < 0 && !deadline.hasExpired()) {
        }
        QFile::remove(address());
        QFile::link(socket, address());
        m_process.swap(next);
        if (next)
            kill(*next);
        return streamCount() >= 0;
    }

    /// Listens until the tone fills a tenth of a second.
    bool hearsTone() {
        QProcess recorder;
        recorder.start(QStringLiteral("parec"),
                       QStringLiteral("--raw --device=desk.monitor --format=s16le --rate=48000 "
                                      "--channels=2 --latency-msec=50")
                           .split(QLatin1Char(' ')));
        const QDeadlineTimer deadline(20'000);
        QByteArray heard;
        double share = 0.0;
        while (share < 0.9 && !deadline.hasExpired() && recorder.waitForReadyRead(20'000)) {
            heard += recorder.readAll();
            heard = heard.right(4 * 4800);
            if (heard.size() == 4 * 4800)
                share = toneShare(reinterpret_cast<const int16_t*>(heard.data()), 4800, 48'000);
        }
        recorder.kill();
        recorder.waitForFinished();
        return share >= 0.9;
    }

    /// How many streams play; -1 when the server does not answer.
    int streamCount() const { return streamCount(address()); }

private:
    QString address() const { return m_dir.filePath(QStringLiteral("socket")); }

    static void kill(QProcess& process) {
        process.kill();
        process.waitForFinished();
    }

    static int streamCount(const QString& socket) {
        QProcess lister;
        lister.start(QStringLiteral("pactl"),
                     {QStringLiteral("--server=unix:") + socket, QStringLiteral("list"),
                      QStringLiteral("short"), QStringLiteral("sink-inputs")});
        const bool isListed = lister.waitForFinished() && lister.exitCode() == 0;
        return isListed ? lister.readAllStandardOutput().count('\n') : -1;
    }

    QTemporaryDir m_dir;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
    int m_starts = 0;
    std::unique_ptr<QProcess> m_process;
};

}  // namespace orvelle::test
