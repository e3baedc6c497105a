#include "core/log.h"

#include <QDir>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include "support/suites.h"

namespace {

Q_LOGGING_CATEGORY(lcTest, "orvelle.test")

class LogTest : public QObject {
    Q_OBJECT

private slots:
    void init() { m_former = qInstallMessageHandler(nullptr); }
    void cleanup() {
        orvelle::stopLog();
        orvelle::setDebugLines(true);
        qInstallMessageHandler(m_former);
    }

    void file_holdsOwnLinesAndQts_once_whateverItsPath() {
        const QTemporaryDir directory;
        const QString name = QString::fromUtf8("\xE6\x97\xA5\xE5\xBF\x97 & %TEMP%.log");
        QFile file(directory.filePath(name));
        QVERIFY(!orvelle::openLogFile(directory.filePath(QStringLiteral("none/log"))));
        QVERIFY(orvelle::openLogFile(file.fileName()));
        orvelle::logQtMessages();
        qCWarning(lcTest, "too early");
        orvelle::setLogEnabled(true);
        orvelle::log("own %d\n", orvelle::kLogInfo, 1);
        qCWarning(lcTest, "trouble");
        orvelle::setLogEnabled(false);
        qCWarning(lcTest, "too late");
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n');
        QCOMPARE(lines.size(), 3);
        QVERIFY(lines[0].startsWith("[20") && lines[0].endsWith("] own 1"));
        QVERIFY(lines[1].startsWith("[20") && lines[1].endsWith("] orvelle.test: trouble"));
    }

    void debugLines_areNotEvenMade_unlessWanted() {
        const QTemporaryDir directory;
        QFile file(directory.filePath(QStringLiteral("log")));
        int made = 0;
        const auto line = [&made] { return ++made; };
        orvelle::setDebugLines(false);
        qCDebug(lcDebug, "unwanted %d", line());
        QCOMPARE(made, 0);
        QVERIFY(orvelle::startLog(file.fileName()));
        qCDebug(lcDebug, "packet %d", line());
        qDebug("rare");
        orvelle::stopLog();
        qCDebug(lcDebug, "unwanted %d", line());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray lines = file.readAll();
        QVERIFY(lines.contains("] packet 1\n[") && lines.endsWith("] rare\n"));
        QCOMPARE(made, 1);
    }

private:
    QtMessageHandler m_former = nullptr;
};

const orvelle::test::RegisterSuite<LogTest> kRegistered;

}  // namespace

#include "log_test.moc"
