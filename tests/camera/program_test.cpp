#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "link/device_code.h"
#include "support/suites.h"

namespace {

constexpr int kTimeoutMs = 30000;

/// The real camera program on loopback.
class Program : public QProcess {
public:
    explicit Program(const QString& line) {
        const QString options = line + QStringLiteral(" --bind 127.0.0.1");
        start(QCoreApplication::applicationDirPath() + QStringLiteral("/orvelle-camera"),
              options.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    }
    ~Program() override {
        kill();
        waitForFinished(kTimeoutMs);
    }

    /// The values of the next lines "NAME: value"; fewer when the program ended.
    QStringList readValues(const char* name, int count) {
        QStringList values;
        while (values.size() < count && (canReadLine() || waitForReadyRead(kTimeoutMs))) {
            const QString line = QString::fromUtf8(readLine()).trimmed();
            if (line.startsWith(QLatin1String(name) + QLatin1String(": ")))
                values += line.section(QLatin1Char(' '), -1);
        }
        return values;
    }
    int endCode() {
        return waitForFinished(kTimeoutMs) && exitStatus() == NormalExit ? exitCode() : -1;
    }
};

}  // namespace

class ProgramTest : public QObject {
    Q_OBJECT

private slots:
    void init() { qputenv("ORVELLE_CAMERA_PASSWORD", "secret"); }

    void program_endsCleanly_onTermination() {
        Program program(QStringLiteral("--demo --uid PROGRAM1 --type 1"));
        QCOMPARE(program.readValues("Port", 1).size(), 1);
        program.terminate();
        QCOMPARE(program.endCode(), 0);
        QCOMPARE(program.readAllStandardError(), QByteArray());
    }

    void program_hostsSeveralCameras_untilAPortIsTaken() {
        Program several(QStringLiteral("--uid MANY --cameras 3"));
        QCOMPARE(several.readValues("UID", 2),
                 QStringList({QStringLiteral("MANY01"), QStringLiteral("MANY02")}));
        const QString port = several.readValues("Port", 2).value(1);
        Program second(QStringLiteral("--uid OTHER --port ") + port);
        QCOMPARE(second.endCode(), 4);
        QVERIFY(second.readAllStandardError().contains("camera OTHER cannot start: "));
        QCOMPARE(Program(QStringLiteral("--uid MANY02")).endCode(), 4);
    }

    void program_makesAClip_andPlaysItOnce_withThePasswordOfAFile() {
        QTemporaryDir directory;
        const QString clip = directory.filePath(QStringLiteral("clip.mp4"));
        QFile password(directory.filePath(QStringLiteral("password")));
        QVERIFY(password.open(QIODevice::WriteOnly) && password.write("filed\r\nsecond line") > 0);
        password.close();
        Program maker(QStringLiteral("--make-clip %1 --seconds 1 --size 360p").arg(clip));
        QCOMPARE(maker.endCode(), 0);
        Program camera(QStringLiteral("--source %1 --once --uid CLIP --password-file %2")
                           .arg(clip, password.fileName()));
        QCOMPARE(camera.readValues("Device code", 1),
                 QStringList(QString::fromStdString(orvelle::encodeDeviceCode("CLIP", "filed"))));
        QCOMPARE(camera.endCode(), 0);
    }

    void program_saysInOneLine_whatIsWrong_data() {
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("said");
        const auto row = [](const char* line, int code, const char* said) {
            QTest::newRow(line) << code << QByteArray(said);
        };
        row("--source /no/such/file", 3, "/no/such/file");
        row("--make-clip /no/such/dir/x.mp4", 3, "/no/such/dir");
        row("--make-clip x.unknown", 3, "x.unknown");
        row("--uid a-b", 2, "--uid");
        row("--uid ABCDEFGHIJKLMNOPQRSTU", 2, "--uid");
        row("--uid ABCDEFGHIJKLMNOPQRS --cameras 2", 2, "--uid");
        row("--port 65530 --cameras 9", 2, "ports");
        row("--bitrate 99999999999999999999", 2, "--bitrate");
        row("--type 1 --source x.mp4", 2, "--type");
        row("--sd-size 1", 2, "--sd-size");
        row("--make-card /proc/card", 3, "/proc/card");
        row("--demo --source x.mp4", 2, "--source");
        row("--source rtsp://u:p@host/x", 2, "ORVELLE_CAMERA_SOURCE");
        row("--password-file /no/such/file", 2, "password file");
        row("stray", 2, "stray");
    }

    void program_saysInOneLine_whatIsWrong() {
        Program program(QString::fromLatin1(QTest::currentDataTag()));
        QTEST(program.endCode(), "code");
        const QByteArray errors = program.readAllStandardError();
        QFETCH(QByteArray, said);
        QVERIFY2(errors.startsWith("orvelle-camera: ") && errors.count('\n') == 1 &&
                     errors.contains(said),
                 errors.constData());
    }
};

static const orvelle::test::RegisterSuite<ProgramTest> s_programTest;

#include "program_test.moc"
