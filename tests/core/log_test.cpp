#include "core/log.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include <thread>
#include <vector>

#include "support/suites.h"

namespace {

class LogTest : public QObject {
    Q_OBJECT

private slots:
    void file_holdsWholeCutLines_whenManyThreadsLog() {
        const QTemporaryDir directory;
        QFile file(directory.filePath(QStringLiteral("log.txt")));
        QVERIFY(!orvelle::openLogFile(directory.path()));
        QVERIFY(orvelle::openLogFile(file.fileName()));
        orvelle::log("not enabled\n", orvelle::kLogInfo);
        orvelle::setLogEnabled(true);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([t] {
                for (int i = 0; i < 25; ++i)
                    orvelle::log("thread %d %s\n", orvelle::kLogInfo, t, "end");
            });
        for (std::thread& thread : threads)
            thread.join();
        orvelle::log("%s", orvelle::kLogError, QByteArray(9000, 'x').constData());
        orvelle::setLogEnabled(false);
        orvelle::closeLogFile();

        QVERIFY(file.open(QIODevice::ReadOnly));
        const QRegularExpression form(
            QStringLiteral("^\\[\\d{4}(/\\d\\d){2} \\d\\d(:\\d\\d){2}\\] thread \\d end\n$"));
        for (int i = 0; i < 100; ++i)
            QVERIFY(form.match(QString::fromLatin1(file.readLine())).hasMatch());
        QCOMPARE(file.readAll().size(), 4096);
    }
};

const orvelle::test::RegisterSuite<LogTest> kRegistered;

}  // namespace

#include "log_test.moc"
