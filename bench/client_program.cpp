#include "client_program.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QThread>

#include "system/camera_set.h"
#include "workbench.h"

namespace orvelle::bench {

namespace {

constexpr int kWindowTimeoutMs = 20000;
constexpr int kEndTimeoutMs = 10000;
constexpr unsigned long kLookIntervalMs = 2;
/// Until the list has found its cameras.
constexpr int kListMs = 4000;
constexpr QSize kWindow(1120, 750);
constexpr int kTaskBarHeight = 40;
/// In the window: the empty middle of the title bar, and the first list entry.
constexpr QPoint kTitleBar(560, 20);
constexpr QPoint kFirstEntry(190, 220);

QPoint onScreen(const QPoint& inWindow) {
    const QSize screen = QGuiApplication::primaryScreen()->size();
    return inWindow + QPoint((screen.width() - kWindow.width()) / 2,
                             (screen.height() - kTaskBarHeight - kWindow.height()) / 2);
}

/// Where the title bar will be: its colour depends on whether the guide of a first start covers it.
QRgb titleBarPixel() {
    const QPoint at = onScreen(kTitleBar);
    const QPixmap pixel = QGuiApplication::primaryScreen()->grabWindow(0, at.x(), at.y(), 1, 1);
    return pixel.toImage().pixel(0, 0);
}

}  // namespace

ClientProgram::ClientProgram(const QString& dataDirectory) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dataDirectory);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(QProcess::nullDevice());
}

ClientProgram::~ClientProgram() {
    if (!end())
        m_process.kill();
    m_process.waitForFinished(kEndTimeoutMs);
}

void ClientProgram::start() {
    m_pixelBefore = titleBarPixel();
    m_sinceStart.start();
    m_process.start(Workbench::program("orvelle"), QStringList());
}

double ClientProgram::waitUntilSeen() {
    const QDeadlineTimer deadline(kWindowTimeoutMs);
    while (!deadline.hasExpired()) {
        if (titleBarPixel() != m_pixelBefore)
            return static_cast<double>(m_sinceStart.nsecsElapsed()) * 1e-6;
        QThread::msleep(kLookIntervalMs);
    }
    return -1.0;
}

bool ClientProgram::openFirstEntry() {
    test::runFor(kListMs);
    const QPoint at = onScreen(kFirstEntry);
    const auto xdotool = [](const QStringList& arguments) {
        return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
    };
    // The guide of the first start; the pointer goes where it wakes no bars.
    return xdotool({QStringLiteral("key"), QStringLiteral("Escape")}) &&
           xdotool({QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y()),
                    QStringLiteral("click"), QStringLiteral("1")}) &&
           xdotool({QStringLiteral("mousemove"), QStringLiteral("0"), QStringLiteral("0")});
}

bool ClientProgram::end() {
    if (m_process.state() == QProcess::NotRunning)
        return true;
    m_process.terminate();
    // The screen may show the window for a moment longer, which the next one must not be taken for.
    return m_process.waitForFinished(kEndTimeoutMs) &&
           test::waitUntil(kEndTimeoutMs, [this] { return titleBarPixel() == m_pixelBefore; });
}

}  // namespace orvelle::bench
