#pragma once

#include <QElapsedTimer>
#include <QProcess>
#include <QRgb>
#include <QString>

namespace orvelle::bench {

/// The client as users run it: a process of its own with a data directory of its own, whose window
/// is found on the screen. Ended with the object. Interface thread.
class ClientProgram {
public:
    /// `dataDirectory` is what XDG_DATA_HOME names; kept.
    explicit ClientProgram(const QString& dataDirectory);
    ~ClientProgram();

    void start();
    /// Milliseconds from start() until the window's title bar is on the screen; negative when it
    /// did not come.
    double waitUntilSeen();
    /// Clicks the first entry of the list, as soon as there is one.
    bool openFirstEntry();
    /// False when it did not end by itself.
    bool end();

    qint64 processId() const { return m_process.processId(); }

private:
    QProcess m_process;
    QElapsedTimer m_sinceStart;
    QRgb m_pixelBefore = 0;
};

}  // namespace orvelle::bench
