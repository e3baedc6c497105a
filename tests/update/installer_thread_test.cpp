#include "update/installer_thread.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <functional>

#include "support/suites.h"
#include "support/system_files.h"
#include "update/signer.h"

using orvelle::InstallerProof;
using orvelle::InstallerThread;
using orvelle::test::programThatMakes;
using Outcome = InstallerThread::Outcome;

namespace {

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.setPermissions(file.permissions() | QFile::ExeOwner);
}

}  // namespace

class InstallerThreadTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(QStringLiteral("setup.exe"));
        m_marker = m_folder->filePath(QStringLiteral("ran"));
        // Longer than what is read at once.
        m_program = programThatMakes(m_marker, 3 << 20);
        write(m_path, m_program);
    }

    void installer_runs_unlessAnythingChangedSinceItWasSaved() {
        const QString other = m_folder->filePath(QStringLiteral("other"));
        QFile writer(m_path);
        const std::pair<const char*, std::function<void()>> changes[] = {
            {"replaced", [&] { write(m_path, programThatMakes(m_marker)); }},
            {"longer", [&] { write(m_path, m_program + "#"); }},
            {"shorter", [&] { write(m_path, m_program.chopped(1)); }},
            {"other last byte", [&] { write(m_path, m_program.chopped(1) + "?"); }},
            {"linked",
             [&] {
                 write(other, m_program);
                 QFile::remove(m_path);
                 QVERIFY(QFile::link(other, m_path));
             }},
            {"gone", [&] { QFile::remove(m_path); }},
            {"a folder", [&] { QFile::remove(m_path), QDir().mkdir(m_path); }},
            {"a pipe", [&] { QDir().rmdir(m_path), orvelle::test::makePipe(m_path); }},
            {"being written", [&] {
                 QFile::remove(m_path);
                 write(m_path, m_program);
                 QVERIFY(writer.open(QIODevice::ReadWrite));
             }}};
        for (const auto& [change, make] : changes) {
            make();
            QVERIFY2(outcomeOf(m_program) == Outcome::kWrongFile && !QFile::exists(m_marker),
                     change);
        }
        writer.close();
        QCOMPARE(outcomeOf(m_program), Outcome::kGenuine);
        QTRY_VERIFY(QFile::exists(m_marker));
    }

    void installer_isNotStarted_whenTheSystemCannot() {
        const QByteArray script = "#!/nowhere/interpreter\n";
        write(m_path, script);
        QCOMPARE(outcomeOf(script), Outcome::kNotStarted);
    }

    void check_runsNothing_andStopsInTheMiddle() {
        InstallerThread check(m_path, proofOf(m_program), InstallerThread::Task::kCheck);
        check.start();
        check.waitForEnd();
        QCOMPARE(check.outcome(), Outcome::kGenuine);
        QVERIFY(!QFile::exists(m_marker));
        InstallerThread stopped(m_path, proofOf(m_program), InstallerThread::Task::kCheckAndRun);
        stopped.stop();
        stopped.start();
        stopped.waitForEnd();
        QCOMPARE(stopped.outcome(), Outcome::kWrongFile);
    }

private:
    InstallerProof proofOf(const QByteArray& content) const {
        orvelle::FileSums sums;
        sums.add(content);
        return {"s", sums.sha256(),
                *orvelle::MinisignSignature::parse(m_signer.sign(content, "file:s")),
                *orvelle::MinisignKey::fromBase64(m_signer.publicKey())};
    }
    Outcome outcomeOf(const QByteArray& signedContent) const {
        InstallerThread thread(m_path, proofOf(signedContent), InstallerThread::Task::kCheckAndRun);
        thread.start();
        thread.waitForEnd();
        return thread.outcome();
    }

    const orvelle::test::Signer m_signer;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    QString m_marker;
    QByteArray m_program;
};

static const orvelle::test::RegisterSuite<InstallerThreadTest> kInstallerThreadTest;
#include "installer_thread_test.moc"
