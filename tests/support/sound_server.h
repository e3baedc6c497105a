#pragma once

#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "support/tone.h"

namespace orvelle::test {

/// A sound server of the test's own, with one sink that plays to nobody. Takes the process's
/// sound when made before the first device is used.
class SoundServer {
public:
    SoundServer() {
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(socket()));
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_dir.path());
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_dir.path());
        m_process.setProcessEnvironment(environment);
        m_process.setStandardErrorFile(QProcess::nullDevice());
    }
    ~SoundServer() { kill(); }

    bool start() {
        QFile::remove(socket());
        const QString arguments =
            QStringLiteral(
                "-n;--daemonize=no;--exit-idle-time=-1;--use-pid-file=no;-L;module-null-sink "
                "sink_name=desk rate=48000 channels=2;-L;module-native-protocol-unix "
                "auth-anonymous=1 socket=") +
            socket();
        m_process.start(QStringLiteral("pulseaudio"), arguments.split(QLatin1Char(';')));
        const QDeadlineTimer deadline(20'000);
        while (m_process.waitForStarted() && streamCount() < 0 && !deadline.hasExpired()) {
        }
        return streamCount() >= 0;
    }

    void kill() {
        m_process.kill();
        m_process.waitForFinished();
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
    int streamCount() const {
        QProcess lister;
        lister.start(QStringLiteral("pactl"),
                     QStringLiteral("list short sink-inputs").split(QLatin1Char(' ')));
        const bool isListed = lister.waitForFinished() && lister.exitCode() == 0;
        return isListed ? lister.readAllStandardOutput().count('\n') : -1;
    }

private:
    QString socket() const { return m_dir.filePath(QStringLiteral("socket")); }

    QTemporaryDir m_dir;
    QProcess m_process;
};

}  // namespace orvelle::test
