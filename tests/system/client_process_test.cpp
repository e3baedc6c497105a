#include "device/tutk_device.h"
#include "support/camera_process.h"
#include "support/suites.h"

#include <signal.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using orvelle::test::CameraProcess;

namespace {

constexpr int kTimeoutMs = 60000;
constexpr int kRefused = 255;  ///< -1 as the system reports it

/// The client program as a user starts and ends it.
class ClientProcessTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void client_answersInFewLines_withoutADisplay_data();
    void client_answersInFewLines_withoutADisplay();
    void client_quitsInOrder_whenToldToEnd_data();
    void client_quitsInOrder_whenToldToEnd();
    void secondCopy_isRefused_whileTheFirstRuns();

private:
    std::unique_ptr<QProcess> startClient(const QString& home) const;
    static bool watchFirstCamera(QProcess& client);
    static void clickFirstEntryIn(const QProcess& client);
    static bool hasWindow(const QProcess& client);
    static void pressReturnIn(const QProcess& client);

    QTemporaryDir m_home;
    orvelle::test::CameraProcess m_camera{{QStringLiteral("--demo"), QStringLiteral("--uid"),
                                           QStringLiteral("CLIENT1"), QStringLiteral("--size"),
                                           QStringLiteral("360p")}};
};

}  // namespace

void ClientProcessTest::initTestCase() {
    const QString devices = m_home.filePath(QStringLiteral("Orvelle/Devices/KvTUTK"));
    QVERIFY(QDir().mkpath(devices));
    KvTUTKDevice device;
    device.setUid(QStringLiteral("CLIENT1"));
    device.setPassword(QLatin1String(CameraProcess::kPassword));
    QVERIFY(device.writeToFile(devices + QStringLiteral("/CLIENT1.xml")));
}

void ClientProcessTest::init() {
    QVERIFY(m_camera.start());
}

void ClientProcessTest::cleanup() {
    m_camera.kill();
}

std::unique_ptr<QProcess> ClientProcessTest::startClient(const QString& home) const {
    auto client = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.path());
    environment.insert(QStringLiteral("ORVELLE_LOG"), QStringLiteral("1"));
    // The GL driver is unloaded by then, so its leaks could not be told from ours.
    environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
    client->setProcessEnvironment(environment);
    client->setProcessChannelMode(QProcess::MergedChannels);
    client->start(QCoreApplication::applicationDirPath() + QStringLiteral("/orvelle"),
                  QStringList());
    return client;
}

/// Clicks until the window is there and its picture, too; another click changes nothing.
bool ClientProcessTest::watchFirstCamera(QProcess& client) {
    QByteArray output;
    const QDeadlineTimer deadline(kTimeoutMs);
    while (!deadline.hasExpired() && client.state() != QProcess::NotRunning) {
        clickFirstEntryIn(client);
        client.waitForReadyRead(1000);
        output += client.readAll();
        if (output.contains("display yuv"))
            return true;
    }
    qWarning("no picture:\n%s", output.constData());
    return false;
}

void ClientProcessTest::clickFirstEntryIn(const QProcess& client) {
    // Escape closes the guide of the first start.
    QProcess::execute(QStringLiteral("xdotool"),
                      QStringLiteral("search --all --onlyvisible --pid %1 --name ^Orvelle$ "
                                     "windowfocus key Escape "
                                     "mousemove --window %@ 190 220 click 1")
                          .arg(client.processId())
                          .split(QLatin1Char(' ')));
}

bool ClientProcessTest::hasWindow(const QProcess& client) {
    const QDeadlineTimer deadline(kTimeoutMs);
    while (!deadline.hasExpired() && client.state() != QProcess::NotRunning) {
        if (QProcess::execute(QStringLiteral("xdotool"),
                              QStringLiteral("search --all --onlyvisible --pid %1 --name ^Orvelle$")
                                  .arg(client.processId())
                                  .split(QLatin1Char(' '))) == 0)
            return true;
    }
    return false;
}

void ClientProcessTest::pressReturnIn(const QProcess& client) {
    QProcess::execute(
        QStringLiteral("xdotool"),
        {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--pid"),
         QString::number(client.processId()), QStringLiteral("windowfocus"), QStringLiteral("key"),
         QStringLiteral("Return")});
}

void ClientProcessTest::client_answersInFewLines_withoutADisplay_data() {
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("display");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("answer");
    QTest::newRow("help") << "--help"
                          << "" << 0 << "^Usage: orvelle \\[--help\\] \\[--version\\] ";
    QTest::newRow("version") << "--version"
                             << "" << 0 << "^orvelle \\d+\\.\\d+\\.\\d+\n$";
    const QString noDisplay = QStringLiteral("^orvelle: there is no display[^\n]*\n$");
    QTest::newRow("none") << ""
                          << "" << 1 << noDisplay;
    QTest::newRow("none that works") << ""
                                     << ":59999" << 1 << noDisplay;
}

void ClientProcessTest::client_answersInFewLines_withoutADisplay() {
    QFETCH(QString, argument);
    QFETCH(QString, display);
    QProcess client;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    environment.insert(QStringLiteral("DISPLAY"), display);
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home.path());
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.path());
    client.setProcessEnvironment(environment);
    client.setProcessChannelMode(QProcess::MergedChannels);
    client.start(QCoreApplication::applicationDirPath() + QStringLiteral("/orvelle"),
                 argument.isEmpty() ? QStringList() : QStringList(argument));
    QVERIFY(client.waitForFinished(kTimeoutMs));
    const QByteArray output = client.readAll();
    QVERIFY2(client.exitStatus() == QProcess::NormalExit, output.constData());
    QTEST(client.exitCode(), "code");
    QFETCH(QString, answer);
    QVERIFY2(QRegularExpression(answer).match(QString::fromUtf8(output)).hasMatch(),
             output.constData());
}

void ClientProcessTest::client_quitsInOrder_whenToldToEnd_data() {
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("terminated") << SIGTERM;
    QTest::newRow("interrupted") << SIGINT;
    QTest::newRow("hung up") << SIGHUP;
}

void ClientProcessTest::client_quitsInOrder_whenToldToEnd() {
    QFETCH(int, signalNumber);
    const auto client = startClient(m_home.path());
    QVERIFY(watchFirstCamera(*client));
    ::kill(static_cast<pid_t>(client->processId()), signalNumber);
    QVERIFY(client->waitForFinished(kTimeoutMs));
    const QByteArray output = client->readAll();
    QVERIFY2(client->exitStatus() == QProcess::NormalExit, output.constData());
    QVERIFY2(client->exitCode() == 0, output.constData());
    // One that was killed would fall silent.
    QVERIFY(m_camera.waitForLine(" left", kTimeoutMs));
}

void ClientProcessTest::secondCopy_isRefused_whileTheFirstRuns() {
    const auto first = startClient(m_home.path());
    QVERIFY(watchFirstCamera(*first));
    // Another folder of data is another client's; another path to the same one is not.
    const QTemporaryDir otherHome;
    const auto other = startClient(otherHome.path());
    const QString link = otherHome.filePath(QStringLiteral("link"));
    QVERIFY(QFile::link(m_home.path(), link));
    const auto second = startClient(link);
    QVERIFY(other->waitForStarted() && hasWindow(*other));
    // The refusal is a message box; Return presses its only button.
    QTRY_VERIFY_WITH_TIMEOUT((pressReturnIn(*second), second->waitForFinished(500),
                              second->state() == QProcess::NotRunning),
                             kTimeoutMs);
    QCOMPARE(second->exitCode(), kRefused);
    for (QProcess* running : {first.get(), other.get()}) {
        QVERIFY(running->state() != QProcess::NotRunning);
        running->terminate();
        QVERIFY(running->waitForFinished(kTimeoutMs));
    }
}

static orvelle::test::RegisterSuite<ClientProcessTest> s_suite;

#include "client_process_test.moc"
