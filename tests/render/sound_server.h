#pragma once

#include <QProcess>
#include <QTemporaryDir>

namespace orvelle::test {

/// A sound server of the test's own, with one sink that plays to nobody. The process's sound
/// goes to it when it is made before the first device is used.
class SoundServer {
public:
    SoundServer();
    ~SoundServer() { kill(); }

    bool start();
    void kill();

    /// Listens to the sink until the tone fills a tenth of a second.
    bool hearsTone();
    /// How many streams play into the sink; -1 when the server does not say.
    int streamCount() const;

private:
    QTemporaryDir m_dir;
    QString m_socket = m_dir.filePath(QStringLiteral("socket"));
    QProcess m_process;
};

}  // namespace orvelle::test
