#include <QDir>
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
            const QByteArray bytes = readLine();
            log += bytes;
            const QString line = QString::fromUtf8(bytes).trimmed();
            if (line.startsWith(QLatin1String(name) + QLatin1String(": ")))
                values += line.section(QLatin1Char(' '), -1);
        }
        return values;
    }
    /// The sanitizer keeps a signal for the thread's next call that it watches, and now and then
    /// (1 of 100 runs) a thread that then waits in poll() never makes one: it is told again.
    int endCodeOnTermination() {
#ifdef __SANITIZE_THREAD__
        for (int tries = 0; tries < 6 && state() == Running; ++tries) {
            terminate();
            waitForFinished(kTimeoutMs / 6);
        }
#else
        terminate();
#endif
        return endCode();
    }
    int endCode() {
        const bool isOver = state() == NotRunning || waitForFinished(kTimeoutMs);
        return isOver && exitStatus() == NormalExit ? exitCode() : -1;
    }

    QByteArray log;  ///< what was read so far
};

QString codeOf(const char* uid, const QByteArray& password) {
    return QString::fromStdString(orvelle::encodeDeviceCode(uid, password.toStdString()));
}

}  // namespace

class ProgramTest : public QObject {
    Q_OBJECT

private slots:
    void init() { qputenv("ORVELLE_CAMERA_PASSWORD", "eight or more"); }

    void program_endsCleanly_onTermination() {
        Program program(QStringLiteral("--demo --uid PROGRAM1 --type 1"));
        QCOMPARE(program.readValues("Port", 1).size(), 1);
        QCOMPARE(program.endCodeOnTermination(), 0);
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
        QVERIFY(password.open(QIODevice::WriteOnly) &&
                password.write("filed123\r\nsecond line") > 0);
        password.close();
        QVERIFY(password.setPermissions(QFile::ReadOwner));
        Program maker(QStringLiteral("--make-clip %1 --seconds 1 --size 360p").arg(clip));
        QCOMPARE(maker.endCode(), 0);
        const QString options = QStringLiteral("--source %1 --once --uid CLIP --password-file %2")
                                    .arg(clip, password.fileName());
        QCOMPARE(Program(options).endCode(), 0);
        Program camera(options + QStringLiteral(" --show-code"));
        QCOMPARE(camera.readValues("Device code", 1), QStringList(codeOf("CLIP", "filed123")));
        QCOMPARE(camera.endCode(), 0);
    }

    void password_isMadeOnce_andItsCodeGoesToNoLog() {
        qunsetenv("ORVELLE_CAMERA_PASSWORD");
        const QTemporaryDir directory;
        const QString state = directory.filePath(QStringLiteral("state"));
        const QString options = QStringLiteral("--uid KEPT --cameras 2 --state ") + state;
        QCOMPARE(Program(options + QStringLiteral(" --show-code")).endCode(), 2);
        QVERIFY(!QFileInfo::exists(state));
        QByteArray kept;
        for (const char* stage : {"made", "kept"}) {
            Program camera(options);
            QCOMPARE(camera.readValues("Port", 2).size(), 2);
            QFile file(state + QStringLiteral("/KEPT.password"));
            QVERIFY2(file.open(QIODevice::ReadOnly), stage);
            const QByteArray password = file.readAll().trimmed();
            QVERIFY(password.size() == 16 && (kept.isEmpty() || kept == password));
            kept = password;
            const auto rights = [](const QString& path) {
                return QFileInfo(path).permissions() & QFile::Permissions(0x77);
            };
            QVERIFY(!rights(state) && !rights(file.fileName()));
            QCOMPARE(QDir(state).entryList(QDir::Files), {QStringLiteral("KEPT.password")});
            // While the camera runs, as for one that is a service.
            Program asked(options + QStringLiteral(" --show-code"));
            QCOMPARE(asked.readValues("Device code", 2),
                     QStringList({codeOf("KEPT01", kept), codeOf("KEPT02", kept)}));
            QCOMPARE(camera.endCodeOnTermination(), 0);
            const QByteArray log =
                camera.log + camera.readAllStandardOutput() + camera.readAllStandardError();
            QVERIFY(log.contains("--show-code") && !log.contains("Device code:"));
            for (const QString& secret : {codeOf("KEPT01", kept), QString::fromLatin1(kept)})
                QVERIFY(!log.contains(secret.toLatin1()));
        }
    }

    void password_mayHoldAnyLetters() {
        for (const char* password : {"8letters", "\xE5\xBD\x95\xE5\x83\x8F\xE6\x9C\xBA wxyz",
                                     "smile \xF0\x9F\x93\xB7!", "\"<&'  >\" "}) {
            qputenv("ORVELLE_CAMERA_PASSWORD", password);
            Program program(QStringLiteral("--uid LETTERS --show-code"));
            QCOMPARE(program.readValues("Device code", 1),
                     QStringList(codeOf("LETTERS", password)));
        }
    }

    void password_leavesTheEnvironment() {
        Program camera(QStringLiteral("--uid ENVIRON"));
        QCOMPARE(camera.readValues("Port", 1).size(), 1);
        QFile environment(QStringLiteral("/proc/%1/environ").arg(camera.processId()));
        if (environment.open(QIODevice::ReadOnly))  // as the administrator only
            QVERIFY(!environment.readAll().contains("eight or more"));
        else
            QVERIFY(QFileInfo::exists(environment.fileName()));
    }

    void password_isRefused_whereverItComesFrom_data() {
        QTest::addColumn<QByteArray>("password");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QByteArray>("said");
        const auto row = [](const char* name, const QByteArray& password, const char* said,
                            int mode = 0x6600) {
            QTest::newRow(name) << password << mode << QByteArray(said);
        };
        row("too short", "7 bytes", "is shorter than 8 characters");
        row("too short in Chinese", "\xE5\xBD\x95\xE5\x83\x8F\xE6\x9C\xBA", "shorter");
        row("empty", "", "is empty");
        row("too long", QByteArray(33, 'x'), "is longer than 32 bytes");
        row("not UTF-8", "password\xFF", "is not UTF-8");
        row("control character", "pass\x01word", "control character");
        row("empty first line", "\npassword", "is empty");
        row("NUL", QByteArray("pass\0word", 9), "holds a NUL byte");
        row("open to the group", "eight or more", "chmod 600", 0x6640);
        row("open to all", "eight or more", "chmod 600", 0x6604);
        row("writable", "eight or more", "chmod 600", 0x6602);
    }

    void password_isRefused_whereverItComesFrom() {
        QFETCH(QByteArray, password);
        QFETCH(int, mode);
        QFETCH(QByteArray, said);
        const QTemporaryDir directory;
        const QString path = directory.filePath(QStringLiteral("REFUSED.password"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(password) == password.size());
        file.close();
        QVERIFY(file.setPermissions(QFile::Permissions(mode)));
        const bool fitsEnvironment =
            mode == 0x6600 && !password.contains('\0') && !password.contains('\n');
        QStringList lines{QStringLiteral("--password-file ") + path,
                          QStringLiteral("--uid REFUSED --state ") + directory.path()};
        if (fitsEnvironment)
            lines += QStringLiteral("--uid REFUSED");
        for (const QString& line : std::as_const(lines)) {
            // A good one elsewhere does not make up for it.
            qputenv("ORVELLE_CAMERA_PASSWORD", line == lines[0] ? "eight or more" : password);
            if (line == lines[1])
                qunsetenv("ORVELLE_CAMERA_PASSWORD");
            Program program(line);
            QCOMPARE(program.endCode(), 2);
            const QByteArray errors = program.readAllStandardError();
            QVERIFY2(errors.startsWith("orvelle-camera: the password") && errors.count('\n') == 1 &&
                         errors.contains(said),
                     errors.constData());
        }
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
