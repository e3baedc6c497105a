#include "render/sound_server.h"

#include <QDeadlineTimer>
#include <QFile>

#include "render/tone.h"

namespace orvelle::test {
namespace {

constexpr int kTimeoutMs = 20'000;
constexpr int kRate = 48'000;
constexpr int kWindowFrames = kRate / 10;

}  // namespace

SoundServer::SoundServer() {
    qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(m_socket));
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), m_dir.path());
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_dir.path());
    m_process.setProcessEnvironment(environment);
    m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.setProgram(QStringLiteral("pulseaudio"));
    m_process.setArguments(
        {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
         QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--use-pid-file=no"),
         QStringLiteral("-L"),
         QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=") + m_socket,
         QStringLiteral("-L"),
         QStringLiteral("module-null-sink sink_name=desk rate=48000 channels=2")});
}

bool SoundServer::start() {
    QFile::remove(m_socket);
    m_process.start();
    if (!m_process.waitForStarted())
        return false;
    const QDeadlineTimer deadline(kTimeoutMs);
    while (streamCount() < 0 && m_process.state() != QProcess::NotRunning) {
        if (deadline.hasExpired())
            return false;
    }
    return m_process.state() == QProcess::Running;
}

void SoundServer::kill() {
    m_process.kill();
    m_process.waitForFinished();
}

bool SoundServer::hearsTone() {
    QProcess recorder;
    recorder.start(QStringLiteral("parec"),
                   {QStringLiteral("--raw"), QStringLiteral("--device=desk.monitor"),
                    QStringLiteral("--format=s16le"), QStringLiteral("--rate=48000"),
                    QStringLiteral("--channels=2"), QStringLiteral("--latency-msec=50")});
    const QDeadlineTimer deadline(kTimeoutMs);
    QByteArray heard;
    double share = 0.0;
    while (share < 0.9 && !deadline.hasExpired() && recorder.waitForReadyRead(kTimeoutMs)) {
        heard += recorder.readAll();
        heard = heard.right(4 * kWindowFrames);
        if (heard.size() == 4 * kWindowFrames)
            share = toneShare(reinterpret_cast<const int16_t*>(heard.constData()), kWindowFrames, 2,
                              kRate);
    }
    recorder.kill();
    recorder.waitForFinished();
    return share >= 0.9;
}

int SoundServer::streamCount() const {
    QProcess lister;
    lister.start(QStringLiteral("pactl"),
                 {QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")});
    if (!lister.waitForFinished() || lister.exitCode() != 0)
        return -1;
    return lister.readAllStandardOutput().count('\n');
}

}  // namespace orvelle::test
