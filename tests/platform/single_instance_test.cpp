#include <QProcess>
#include <QTemporaryDir>

#include "platform/single_instance.h"
#include "support/suites.h"

using orvelle::SingleInstance;

namespace {

class SingleInstanceTest : public QObject {
    Q_OBJECT

private slots:
    void init() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_directory.path())); }

    void acquire_isRefused_whileAnotherProcessHolds_andFreeOnceThatIsKilled() {
        QProcess other;
        other.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--hold"), QStringLiteral("Name")});
        QVERIFY(other.waitForReadyRead());
        QCOMPARE(other.readAll().trimmed(), QByteArray("held"));
        SingleInstance instance("Name");
        QVERIFY(!instance.acquire() && !instance.isHeld());
        other.kill();
        QVERIFY(other.waitForFinished());
        QVERIFY(instance.acquire() && instance.isHeld() && !SingleInstance("Name").acquire());
        instance.release();
        QVERIFY(SingleInstance("Name").acquire());
    }

private:
    const QTemporaryDir m_directory;
};

const orvelle::test::RegisterSuite<SingleInstanceTest> kRegistered;

}  // namespace

#include "single_instance_test.moc"
