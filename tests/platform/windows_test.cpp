#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <thread>

#include <windows.h>

#include "platform/folder_identity.h"
#include "platform/keep_awake.h"
#include "platform/native_message.h"
#include "platform/open_folder.h"
#include "platform/quit_signals.h"
#include "platform/replace_file.h"
#include "platform/run_file.h"
#include "platform/session_end_hold.h"
#include "platform/sync_file.h"
#include "support/suites.h"

using namespace orvelle;

namespace {

constexpr wchar_t kHoldClass[] = L"OrvelleSessionEnd";

bool write(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class WindowsTest : public QObject {
    Q_OBJECT

private slots:
    void files_areReached_whateverTheirPath() {
        const QString odd = QString::fromUtf8("a b & %TEMP% \xE5\xBD\x95\xE5\x83\x8F");
        const QString deep = QStringLiteral("/") + QString(150, QLatin1Char('d'));
        for (const QString& folder : {odd, QString(odd + deep + deep)}) {
            const QString path = m_directory.filePath(folder);
            QVERIFY(QDir().mkpath(path));
            const std::string parent = path.toStdString();
            const std::string file = parent + "/file";
            const std::string next = parent + "/next";
            QVERIFY(write(QString::fromStdString(file), "old"));
            QVERIFY(write(QString::fromStdString(next), "new"));
            QVERIFY(syncFile(next) && replaceFile(next, file) && !syncFile(next));
            QCOMPARE(contentOf(QString::fromStdString(file)), QByteArray("new"));
            const auto identity = writableFolderIdentity(parent);
            QVERIFY(identity && identity == writableFolderIdentity(parent + "/."));
            QVERIFY(!writableFolderIdentity(file) && !replaceFile(next, file));
        }
    }

    void launch_runsWhatItIsGiven_orFails() {
        const QString folder = m_directory.filePath(QString::fromUtf8("x & 50% \xE5\xBD\x95"));
        const QString told = m_directory.filePath(QStringLiteral("told"));
        const QString program = folder + QStringLiteral("/set  up.exe");
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), program));
        const QString bin = QDir::toNativeSeparators(QCoreApplication::applicationDirPath());
        qputenv("PATH", bin.toLocal8Bit() + ';' + qgetenv("PATH"));
        qputenv("ORVELLE_TEST_TELL", told.toUtf8());
        QVERIFY(runFile(program.toStdString()));
        QTRY_COMPARE_WITH_TIMEOUT(contentOf(told), QByteArray("set  up.exe"), 20'000);
        qunsetenv("ORVELLE_TEST_TELL");
        const std::string whole = folder.toStdString();
        for (const std::string& none : {std::string(), whole, whole + "/none.exe"})
            QVERIFY(!runFile(none));
        for (const std::string& none : {std::string(), program.toStdString(), whole + "/none"})
            QVERIFY(!openFolder(none));
    }

    void orderToQuit_reachesTheThread_fromConsoleInstallerAndOthers() {
        int calls = 0;
        const QuitSignals quit([&] { calls += QThread::currentThread() == thread() ? 1 : 99; });
        const SessionEndHold hold("closing");
        const DWORD self = GetCurrentThreadId();
        std::thread([self] { PostThreadMessageW(self, WM_CLOSE, 0, 0); }).join();
        QTRY_COMPARE(calls, 1);
        PostMessageW(FindWindowW(kHoldClass, nullptr), WM_APP, 0, 0);
        QTRY_COMPARE(calls, 2);
    }

    void endOfSession_waitsForTheProgram() {
        auto hold = std::make_unique<SessionEndHold>("closing");
        const HWND window = FindWindowW(kHoldClass, nullptr);
        QVERIFY(window);
        const auto ask = [window](UINT message, WPARAM isEnding, DWORD_PTR* answer) {
            return SendMessageTimeoutW(window, message, isEnding, 0, SMTO_NORMAL, 500, answer) != 0;
        };
        DWORD_PTR answer = FALSE;
        QVERIFY(ask(WM_QUERYENDSESSION, 0, &answer) && answer == TRUE);
        QVERIFY(ask(WM_ENDSESSION, FALSE, &answer));  // called off by another program
        QVERIFY(ask(WM_QUERYENDSESSION, 0, &answer) && answer == TRUE);
        QVERIFY(!ask(WM_ENDSESSION, TRUE, &answer));
        hold.reset();
        QVERIFY(!FindWindowW(kHoldClass, nullptr));
    }

    void keepAwake_lastsAsLongAsItsObject() {
        constexpr EXECUTION_STATE kBoth = ES_SYSTEM_REQUIRED | ES_DISPLAY_REQUIRED;
        SetThreadExecutionState(ES_CONTINUOUS);
        {
            const KeepAwake awake;
            const EXECUTION_STATE state = SetThreadExecutionState(ES_CONTINUOUS | kBoth);
            QCOMPARE(state & kBoth, kBoth);
        }
        QCOMPARE(SetThreadExecutionState(ES_CONTINUOUS) & kBoth, EXECUTION_STATE{0});
    }

    void nativeMessages_areTold_inBothKindsOfEvent() {
        for (const char* type : {"windows_generic_MSG", "windows_dispatcher_MSG", "xcb_generic"}) {
            const bool isOwn = qstrcmp(type, "xcb_generic") != 0;
            const auto told = [type](UINT number, WPARAM first) {
                MSG message = {};
                message.message = number;
                message.wParam = first;
                return nativeMessage(type, &message);
            };
            QCOMPARE(told(WM_QUERYENDSESSION, 0) == NativeMessage::SessionEnd, isOwn);
            QCOMPARE(told(WM_POWERBROADCAST, PBT_APMSUSPEND) == NativeMessage::AboutToSuspend,
                     isOwn);
            QVERIFY(told(WM_POWERBROADCAST, PBT_APMRESUMESUSPEND) == NativeMessage::Other);
            QVERIFY(told(WM_ENDSESSION, TRUE) == NativeMessage::Other);
        }
    }

    void crash_leavesADump_data() {
        QTest::addColumn<QString>("how");
        QTest::newRow("access") << QStringLiteral("access");
        QTest::newRow("abort") << QStringLiteral("abort");
    }

    void crash_leavesADump() {
        QFETCH(const QString, how);
        const QString dump = m_directory.filePath(QString::fromUtf8("\xE5\xBD\x95 ") + how);
        QVERIFY(write(dump, "old"));
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--crash"), how, dump});
        QVERIFY(child.waitForFinished() && child.exitCode() != 0);
        QCOMPARE(contentOf(dump).left(4), QByteArray("MDMP"));
    }

private:
    const QTemporaryDir m_directory;
};

const orvelle::test::RegisterSuite<WindowsTest> kRegistered;

}  // namespace

#include "windows_test.moc"
