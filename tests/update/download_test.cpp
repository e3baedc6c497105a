#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>

#include "device/test_tools.h"
#include "support/suites.h"
#include "support/system_files.h"
#include "update/file_downloader.h"
#include "update/signer.h"
#include "update/update_server.h"

using orvelle::FileDownloader;
using orvelle::Installer;
using orvelle::test::elsewhere;
using orvelle::test::Signer;
using orvelle::test::wasAsked;
using orvelle::test::WebServer;
using Outcome = FileDownloader::Outcome;

namespace {

// Longer than what is read ahead of the disk.
const QByteArray kWhole = "#!/bin/sh\n" + QByteArray(1'200'000, 'x');

QByteArray sumOf(const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class DownloadTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_target = m_folder->filePath(QStringLiteral("117.run"));
        m_temporary = m_target + QStringLiteral(".tmp");
        m_server = std::make_unique<WebServer>();
        orvelle::setUpdateServer(m_server->address(), m_signer.publicKey());
        m_signer.publish(*m_server, "/whole", kWhole);
        giveSigned("/moved", "301 Moved", "Location: /whole\r\n" + WebServer::length(0), "",
                   kWhole);
        giveSigned("/local", "302 Found", "Location: file:///etc/hostname\r\n", "");
        giveSigned("/afar", "302 Found", "Location: " + elsewhere(*m_server) + "/whole\r\n", "");
        giveSigned("/ring", "302 Found", "Location: /ring\r\n" + WebServer::length(0), "");
        const QByteArray chunked = "Transfer-Encoding: chunked\r\n";
        giveSigned("/chunks", "200 OK", chunked, "5\r\nhello\r\n0\r\n\r\n", "hello");
        giveSigned("/cut", "200 OK", chunked, "5\r\nhello\r\n9\r\nwo");
        giveSigned("/open", "200 OK", "", kWhole, kWhole);
        giveSigned("/short", "200 OK", WebServer::length(100), QByteArray(60, 'x'));
        giveSigned("/stalled", "200 OK", WebServer::length(100), QByteArray(60, 'x'));
        m_server->stalled = "/stalled";
        giveSigned("/empty", "200 OK", WebServer::length(0), "");
        giveSigned("/broken", "500 Oops", WebServer::length(4), "oops");
        m_server->give("/unsigned", kWhole);
        m_server->give("/torn", kWhole);
        m_server->give("/torn.minisig", m_signer.sign(kWhole, "file:torn").chopped(20));
        m_server->give("/page", kWhole);
        m_server->give("/page.minisig", QByteArray(1 << 20, '\n'));
        m_server->give("/other", kWhole);
        m_server->give("/other.minisig", m_signer.sign("other", "file:other"));
        m_server->give("/renamed", kWhole);
        m_server->give("/renamed.minisig", m_signer.sign(kWhole, "file:whole"));
        Signer().publish(*m_server, "/stranger", kWhole);
    }

    void file_arrivesWhole_orIsRefused_data() {
        QTest::addColumn<QByteArray>("existing");
        QTest::addColumn<QByteArray>("signedContent");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QByteArray>("content");  // of the target
        QTest::addColumn<int>("left");            // in the temporary file, -1: none
        const QByteArray none;
        const auto row = [](const char* path, const QByteArray& existing, const QByteArray& sum,
                            Outcome outcome, const QByteArray& content, int left = -1) {
            QTest::newRow(path) << existing << sum << int(outcome) << content << left;
        };
        row("/whole", none, kWhole, Outcome::kDone, kWhole);
        row("/whole, other sum", none, "x", Outcome::kWrongFile, none);
        row("/whole exists", kWhole, kWhole, Outcome::kDone, kWhole);
        row("/whole exists, wrong", "old", kWhole, Outcome::kDone, kWhole);
        row("/moved", none, kWhole, Outcome::kDone, kWhole);
        row("/local", none, kWhole, Outcome::kUntrusted, none);
        row("/afar", none, kWhole, Outcome::kUntrusted, none);
        row("/ring", none, kWhole, Outcome::kMissing, none);
        row("/chunks", none, "hello", Outcome::kDone, "hello");
        row("/cut", none, kWhole, Outcome::kShort, none, 7);
        row("/open", none, kWhole, Outcome::kDone, kWhole);
        row("/short", none, kWhole, Outcome::kShort, none, 60);
        row("/stalled", none, kWhole, Outcome::kStalled, none, 60);
        row("/empty", none, kWhole, Outcome::kShort, none);
        row("/broken", none, kWhole, Outcome::kMissing, none);
        row("/missing", none, kWhole, Outcome::kMissing, none);
        row("/unsigned", none, kWhole, Outcome::kMissing, none);
        row("/unsigned exists", kWhole, kWhole, Outcome::kMissing, kWhole);
        row("/torn", none, kWhole, Outcome::kWrongFile, none);
        row("/page", none, kWhole, Outcome::kWrongFile, none);
        row("/other", none, kWhole, Outcome::kWrongFile, none);
        row("/other exists", "other", kWhole, Outcome::kWrongFile, none);
        row("/renamed", none, kWhole, Outcome::kWrongFile, none);
        row("/stranger", none, kWhole, Outcome::kWrongFile, none);
    }
    void file_arrivesWhole_orIsRefused() {
        QFETCH(QByteArray, existing);
        QFETCH(QByteArray, signedContent);
        const QByteArray path = QByteArray(QTest::currentDataTag()).split(' ')[0].split(',')[0];
        QFile file(m_target);
        QVERIFY(existing.isEmpty() || (file.open(QIODevice::WriteOnly) && file.write(existing)));
        file.close();
        FileDownloader downloader(nullptr, path == m_server->stalled ? 200 : 60'000);
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        QSignalSpy progressed(&downloader, &FileDownloader::progressed);
        downloader.start(installer(path, signedContent), m_target);
        QTRY_COMPARE(finished.count(), 1);
        QTEST(int(downloader.outcome()), "outcome");
        QTEST(contentOf(m_target), "content");
        QTEST(QFile::exists(m_temporary) ? contentOf(m_temporary).size() : -1, "left");
        const bool isDone = downloader.outcome() == Outcome::kDone;
        QCOMPARE(isDone, downloader.proof() && !contentOf(m_target).isEmpty());
        // What proves right is not fetched again.
        const bool isFetched = wasAsked(*m_server, "GET " + path + " ");
        QVERIFY(!isDone || isFetched == (existing != kWhole));
        const bool isOpen = path == "/open" || path[1] == 'c';
        for (const auto& step : qAsConst(progressed))
            QCOMPARE(step.at(1).toLongLong() < 0, isOpen);
        if (orvelle::test::isRunnableByMark())
            QCOMPARE(QFileInfo(m_target).isExecutable(),
                     isDone && contentOf(m_target).startsWith("#!"));
    }

    void failure_saysWhatTheServerAnswered() {
        for (const auto& [path, status] :
             {std::pair("/missing", 404), {"/unsigned", 404}, {"/broken", 500}}) {
            FileDownloader downloader;
            QSignalSpy finished(&downloader, &FileDownloader::finished);
            downloader.start(installer(path, kWhole), m_target);
            QTRY_COMPARE(finished.count(), 1);
            QCOMPARE(downloader.httpStatus(), status);
        }
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        const Installer gone = installer("/whole", kWhole);
        m_server->close();
        downloader.start(gone, m_target);
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(downloader.outcome(), Outcome::kUnreachable);
    }

    void download_isNotSaved_whenTheDiskTakesNothing() {
        if (!orvelle::test::FullDisk::isPossible())
            QSKIP("no limit on the size of files");
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        const Installer whole = installer("/whole", kWhole);
        {
            const orvelle::test::FullDisk disk(1 << 20);
            downloader.start(whole, m_target);
            QTRY_COMPARE(finished.count(), 1);
        }
        QCOMPARE(downloader.outcome(), Outcome::kNotSaved);
        QVERIFY(!QFile::exists(m_target) && !QFile::exists(m_temporary));
        downloader.start(whole, QStringLiteral("/proc/117.run"));
        QTRY_COMPARE(finished.count(), 2);
        QCOMPARE(downloader.outcome(), Outcome::kNotSaved);
        downloader.start(whole, m_target);
        QTRY_COMPARE(finished.count(), 3);
        QCOMPARE(contentOf(m_target), kWhole);
    }

    void link_isNotWrittenThrough() {
        const QString victim = m_folder->filePath(QStringLiteral("victim"));
        for (const QString& name : {m_target, m_temporary})
            QVERIFY(QFile::link(victim, name));
        QFile file(victim);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("mine") == 4);
        file.close();
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        downloader.start(installer("/whole", kWhole), m_target);
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(contentOf(victim), QByteArray("mine"));
        QVERIFY(!QFileInfo(m_target).isSymLink() && contentOf(m_target) == kWhole);
    }

    void cancel_endsTheRequest_atAnyTime() {
        FileDownloader downloader;
        QSignalSpy finished(&downloader, &FileDownloader::finished);
        QSignalSpy progressed(&downloader, &FileDownloader::progressed);
        const Installer stalled = installer("/stalled", kWhole);
        downloader.start(stalled, m_target);
        QTRY_COMPARE(progressed.count(), 1);
        QTRY_COMPARE(m_server->clients, 1);
        downloader.cancel();
        QTRY_COMPARE(m_server->clients, 0);
        // From within its own signal, too, and before it has begun.
        connect(&downloader, &FileDownloader::progressed, &downloader, &FileDownloader::cancel);
        downloader.start(stalled, m_target);
        QTRY_COMPARE(progressed.count(), 2);
        downloader.start(stalled, m_target);
        downloader.cancel();
        QTRY_COMPARE(m_server->clients, 0);
        QVERIFY(finished.isEmpty() && !QFile::exists(m_target));
    }

private:
    Installer installer(const QByteArray& path, const QByteArray& content) const {
        return {QUrl(m_server->address(QString::fromLatin1(path))), QStringLiteral("117.run"),
                sumOf(content)};
    }
    /// An answer beside which there is a signature of the content that it should have brought.
    void giveSigned(const QByteArray& path, const QByteArray& status, const QByteArray& headers,
                    const QByteArray& body, const QByteArray& content = "x") {
        m_signer.publish(*m_server, path, content);
        m_server->give(path, status, headers, body);
    }

    const Signer m_signer;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_target;
    QString m_temporary;
    std::unique_ptr<WebServer> m_server;
};

static const orvelle::test::RegisterSuite<DownloadTest> kDownloadTest;
#include "download_test.moc"
