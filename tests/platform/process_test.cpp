#include <QDir>
#include <QTemporaryDir>

#include <csignal>
#include <thread>

#include "platform/open_folder.h"
#include "platform/quit_signals.h"
#include "platform/run_file.h"
#include "platform/single_instance.h"
#include "support/suites.h"

using orvelle::QuitSignals;
using orvelle::SingleInstance;

namespace {

class ProcessTest : public QObject {
    Q_OBJECT

private slots:
    void init() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_directory.path())); }

    void acquire_trustsNoPlaceOfOthers() {
        const QString target = m_directory.filePath(QStringLiteral("target"));
        QVERIFY(QFile::link(target, m_directory.filePath(QStringLiteral("Link.lock"))));
        SingleInstance instance("Link");
        QVERIFY(instance.acquire() && !instance.isHeld() && !QFile::exists(target));
        const QTemporaryDir shared;
        QFile::setPermissions(shared.path(), QFile::Permissions(0x7777));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(shared.path()));
        QVERIFY(instance.acquire() && instance.isHeld() && QDir(shared.path()).isEmpty());
    }

    void quitSignals_callBackOnTheirOwnThread_untilTheyGo() {
        std::signal(SIGTERM, SIG_IGN);
        int calls = 0;
        for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
            const QuitSignals quit([&] { calls += QThread::currentThread() == thread() ? 1 : 99; });
            const int before = calls;
            std::thread([number] { std::raise(number); }).join();
            QCOMPARE(calls, before);
            QTRY_COMPARE(calls, before + 1);
        }
        QVERIFY(std::signal(SIGTERM, SIG_DFL) == SIG_IGN);
        // As nohup wants it.
        std::signal(SIGHUP, SIG_IGN);
        const int before = calls;
        {
            const QuitSignals quit([&] { ++calls; });
            std::raise(SIGHUP);
            QCoreApplication::processEvents();
            QCOMPARE(calls, before);
        }
        QVERIFY(std::signal(SIGHUP, SIG_DFL) == SIG_IGN);
    }

    void launch_passesThePathWhole_orFails() {
        QVERIFY(QDir::setCurrent(m_directory.path()));
        script("xdg-open");
        script("set  up");
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(m_directory.path()) + ":/usr/bin:/bin");
        for (const char* name : {"two  blanks", "-dash", "a&b;$(touch x)`'\"", "\xE5\xBD\x95%1"}) {
            QVERIFY(QDir().mkpath(QString::fromUtf8(name)));
            QVERIFY(orvelle::openFolder(name));
            QTRY_COMPARE(taken(), "1 " + m_directory.path().toUtf8() + '/' + name);
        }
        QVERIFY(orvelle::runFile("set  up"));
        QTRY_COMPARE(taken(), QByteArray("0 "));
        QVERIFY(!QFile::exists(QStringLiteral("x")) && !orvelle::openFolder("set  up"));
        QVERIFY(!orvelle::runFile(".") && !orvelle::runFile("") && !orvelle::openFolder(""));
        qputenv("PATH", "/nonexistent");
        QVERIFY(!orvelle::openFolder("."));
        qputenv("PATH", path);
    }

private:
    // Leaves the number of its arguments and the first one in the file "out".
    static void script(const char* name) {
        QFile file(QString::fromLatin1(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\nprintf '%s %s' $# \"$1\" >tmp && mv tmp out\n");
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    static QByteArray taken() {
        QFile file(QStringLiteral("out"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    const QTemporaryDir m_directory;
};

const orvelle::test::RegisterSuite<ProcessTest> kRegistered;

}  // namespace

#include "process_test.moc"
