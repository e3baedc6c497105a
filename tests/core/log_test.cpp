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
        qInstallMessageHandler(m_former);
        orvelle::setLogEnabled(false);
        orvelle::closeLogFile();
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

private:
    QtMessageHandler m_former = nullptr;
};

const orvelle::test::RegisterSuite<LogTest> kRegistered;

}  // namespace

#include "log_test.moc"
